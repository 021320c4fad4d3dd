#pragma once

#include "KRMonkeyEventKind.h"

#include <Qt>

#include <cstdint>

// Mouse clicks on a row's title, check box or drag handle, anywhere on a row, or in the empty space below
// the rows: single clicks, double clicks and presses that drag before the release, with and without Shift,
// Ctrl and Alt. Targets come from the rows' frames when the event is delivered, so clicks hit what they name.
class KRMonkeyClickEventKind : public KRMonkeyEventKind {
public:
    enum class Target { Title, CheckBox, Handle, Row, BelowRows };
    enum class Gesture { Click, DoubleClick, Drag };

    struct Click {
        Target target = Target::Title;
        // Rows past the last one mean the last one.
        std::uint64_t row = 0;
        // Where in the target, as fractions of its width and height.
        double x = 0.5;
        double y = 0.5;
        Gesture gesture = Gesture::Click;
        // How far a drag goes from the press, in points.
        double dragX = 0.0;
        double dragY = 0.0;
        Qt::KeyboardModifiers modifiers;
    };

    QString name() const override { return QStringLiteral("click"); }
    KRMonkeyEvent makeEvent(KRMonkeyRandom& random, const KRMonkeySession& session) const override;

    static KRMonkeyEvent makeClickEvent(const Click& click);
    static QString describe(const Click& click);
};
