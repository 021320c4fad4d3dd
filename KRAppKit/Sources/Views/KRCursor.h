#pragma once

#include <functional>

// The pointer's shape. set() makes it current; the host widget shows it.
class KRCursor {
public:
    enum class Shape { Arrow, IBeam, PointingHand, ClosedHand, OpenHand };

    static KRCursor arrowCursor() { return KRCursor(Shape::Arrow); }
    static KRCursor IBeamCursor() { return KRCursor(Shape::IBeam); }
    static KRCursor pointingHandCursor() { return KRCursor(Shape::PointingHand); }
    static KRCursor closedHandCursor() { return KRCursor(Shape::ClosedHand); }
    static KRCursor openHandCursor() { return KRCursor(Shape::OpenHand); }

    Shape shape() const { return m_shape; }
    void set() const;
    static KRCursor currentCursor();
    // Told of every set(); the host widget installs one.
    static void setCursorChangeHandler(std::function<void(KRCursor)> handler);

    friend bool operator==(const KRCursor&, const KRCursor&) = default;

private:
    explicit KRCursor(Shape shape) : m_shape(shape) {}
    Shape m_shape;
};
