#pragma once

#include "Animation/EZSampledFunction.h"
#include "Animation/KRAnimationGroup.h"
#include "Geometry/KRGeometry.h"

#include <QColor>

#include <array>

// An animatable value: up to four numbers (a scalar, a point or size, a rect, or a colour as premultiplied
// RGBA, so fades to and from clear never darken).
struct KRAnimatableValue {
    std::array<double, 4> components{};
    int count = 0;

    static KRAnimatableValue fromDouble(double value);
    static KRAnimatableValue fromPoint(KRPoint point);
    static KRAnimatableValue fromSize(KRSize size);
    static KRAnimatableValue fromColor(const QColor& color);
    double toDouble() const { return components[0]; }
    KRPoint toPoint() const { return KRPoint{components[0], components[1]}; }
    KRSize toSize() const { return KRSize{components[0], components[1]}; }
    QColor toColor() const;

    static KRAnimatableValue interpolate(const KRAnimatableValue& from, const KRAnimatableValue& to,
                                         double progress);
    friend bool operator==(const KRAnimatableValue&, const KRAnimatableValue&) = default;
};

// One running animation of one property: from a value to a value, along a curve, from a begin time.
class KRPropertyAnimation {
public:
    // Tells the group (when there is one) that an animation started; stop() or destruction tells it
    // that it stopped.
    KRPropertyAnimation(KRAnimatableValue from, KRAnimatableValue to, double beginTime,
                        EZSampledFunctionRef function, std::shared_ptr<KRAnimationGroup> group);
    // A moved-from animation no longer belongs to the group; it never notifies it.
    KRPropertyAnimation(KRPropertyAnimation&&) noexcept = default;
    // Stops the animation being overwritten first (vector erase moves over the erased element).
    KRPropertyAnimation& operator=(KRPropertyAnimation&&) noexcept;
    // Tells the group it stopped unless already done, so a superseded animation still lets the
    // group complete.
    ~KRPropertyAnimation();

    const KRAnimatableValue& fromValue() const { return m_from; }
    const KRAnimatableValue& toValue() const { return m_to; }
    double beginTime() const { return m_beginTime; }
    double duration() const;
    const EZSampledFunctionRef& function() const { return m_function; }

    KRAnimatableValue valueAtTime(double time) const;
    bool isFinishedAtTime(double time) const;
    // Marks the animation stopped and tells its group (once).
    void stop();

private:
    KRAnimatableValue m_from;
    KRAnimatableValue m_to;
    double m_beginTime;
    EZSampledFunctionRef m_function;
    std::shared_ptr<KRAnimationGroup> m_group;
};
