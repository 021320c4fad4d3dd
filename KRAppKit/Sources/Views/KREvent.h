#pragma once

#include "Geometry/KRGeometry.h"

#include <QString>

#include <cstdint>

class KRView;
class KRWindow;
class KRTrackingArea;

enum class KREventType : int {
    LeftMouseDown = 1,
    LeftMouseUp = 2,
    RightMouseDown = 3,
    RightMouseUp = 4,
    MouseMoved = 5,
    LeftMouseDragged = 6,
    RightMouseDragged = 7,
    MouseEntered = 8,
    MouseExited = 9,
    KeyDown = 10,
    KeyUp = 11,
    FlagsChanged = 12,
    CursorUpdate = 17,
    ScrollWheel = 22,
};

using KREventModifierFlags = std::uint64_t;
inline constexpr KREventModifierFlags KREventModifierFlagCapsLock = 1ull << 16;
inline constexpr KREventModifierFlags KREventModifierFlagShift = 1ull << 17;
inline constexpr KREventModifierFlags KREventModifierFlagControl = 1ull << 18;
inline constexpr KREventModifierFlags KREventModifierFlagOption = 1ull << 19;
inline constexpr KREventModifierFlags KREventModifierFlagCommand = 1ull << 20;
inline constexpr KREventModifierFlags KREventModifierFlagNumericPad = 1ull << 21;
inline constexpr KREventModifierFlags KREventModifierFlagFunction = 1ull << 23;
inline constexpr KREventModifierFlags KREventModifierFlagDeviceIndependentFlagsMask = 0xffff0000ull;

// Hardware-independent key codes of the keys the toolkit and its clients tell apart.
namespace KRKeyCode {
inline constexpr unsigned short A = 0, S = 1, D = 2, F = 3, H = 4, G = 5, Z = 6, X = 7, C = 8, V = 9, B = 11,
                                Q = 12, W = 13, E = 14, R = 15, Y = 16, T = 17, O = 31, U = 32, I = 34,
                                P = 35, L = 37, J = 38, K = 40, N = 45, M = 46;
inline constexpr unsigned short Digit1 = 18, Digit2 = 19, Digit3 = 20, Digit4 = 21, Digit6 = 22, Digit5 = 23,
                                Equal = 24, Digit9 = 25, Digit7 = 26, Minus = 27, Digit8 = 28, Digit0 = 29,
                                RightBracket = 30, LeftBracket = 33, Quote = 39, Semicolon = 41,
                                Backslash = 42, Comma = 43, Slash = 44, Period = 47, Grave = 50;
inline constexpr unsigned short Return = 36, Tab = 48, Space = 49, Delete = 51, Escape = 53, KeypadEnter = 76,
                                Help = 114, Home = 115, PageUp = 116, ForwardDelete = 117, End = 119,
                                PageDown = 121, LeftArrow = 123, RightArrow = 124, DownArrow = 125,
                                UpArrow = 126, F1 = 122, F2 = 120, F3 = 99, F4 = 118, F5 = 96, F6 = 97,
                                F7 = 98, F8 = 100, F9 = 101, F10 = 109, F11 = 103, F12 = 111;
} // namespace KRKeyCode

// An input event. Locations are in the window's coordinates (flipped, points).
class KREvent {
public:
    static KREvent mouseEvent(KREventType type, KRPoint locationInWindow, KREventModifierFlags modifierFlags,
                              KRWindow* window, int clickCount = 1, double timestamp = 0.0);
    static KREvent keyEvent(KREventType type, KREventModifierFlags modifierFlags, const QString& characters,
                            const QString& charactersIgnoringModifiers, unsigned short keyCode,
                            KRWindow* window, bool isARepeat = false, double timestamp = 0.0);
    static KREvent scrollEvent(KRPoint locationInWindow, double deltaX, double deltaY,
                               KREventModifierFlags modifierFlags, KRWindow* window);
    // Entered, exited and cursor-update events carry the tracking area that caused them.
    static KREvent trackingEvent(KREventType type, KRPoint locationInWindow, KRTrackingArea* trackingArea,
                                 KREventModifierFlags modifierFlags, KRWindow* window);

    KREventType type() const { return m_type; }
    KREventModifierFlags modifierFlags() const { return m_modifierFlags; }
    int clickCount() const { return m_clickCount; }
    unsigned short keyCode() const { return m_keyCode; }
    const QString& characters() const { return m_characters; }
    const QString& charactersIgnoringModifiers() const { return m_charactersIgnoringModifiers; }
    // Whether the key types text: its characters are not empty and every code point of them is a graphic
    // character or an invisible format character (joiners, direction marks). Characters outside the Basic
    // Multilingual Plane arrive as surrogate pairs and count whole.
    bool typesText() const;
    bool isARepeat() const { return m_isARepeat; }
    KRPoint locationInWindow() const { return m_locationInWindow; }
    // The location converted into view's coordinates.
    KRPoint locationInView(const KRView* view) const;
    KRWindow* window() const { return m_window; }
    double timestamp() const { return m_timestamp; }
    double deltaX() const { return m_deltaX; }
    double deltaY() const { return m_deltaY; }
    KRTrackingArea* trackingArea() const { return m_trackingArea; }
    bool isMouseEvent() const;
    bool isKeyEvent() const { return m_type == KREventType::KeyDown || m_type == KREventType::KeyUp; }

    // The modifier keys held now and the pointer on the screen. The host keeps them current; tests set them.
    static KREventModifierFlags currentModifierFlags();
    static void setCurrentModifierFlags(KREventModifierFlags flags);
    static KRPoint mouseLocation();
    static void setMouseLocation(KRPoint screenLocation);

private:
    KREvent() = default;

    KREventType m_type = KREventType::MouseMoved;
    KREventModifierFlags m_modifierFlags = 0;
    int m_clickCount = 0;
    unsigned short m_keyCode = 0;
    QString m_characters;
    QString m_charactersIgnoringModifiers;
    bool m_isARepeat = false;
    KRPoint m_locationInWindow;
    KRWindow* m_window = nullptr;
    double m_timestamp = 0.0;
    double m_deltaX = 0.0;
    double m_deltaY = 0.0;
    KRTrackingArea* m_trackingArea = nullptr;
};
