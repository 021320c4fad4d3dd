#include "KRMonkeyClickEventKind.h"

#include "KRMonkeyKeys.h"
#include "KRMonkeyRandom.h"
#include "KRMonkeySession.h"

#include "KRCheckListItemView.h"
#include "KRCheckListView.h"

#include <QRectF>

#include <algorithm>
#include <cmath>

namespace {

// A drag moves in a few steps, as a hand does.
constexpr int kDragSteps = 3;
// Milliseconds between the parts of one gesture: well inside the double-click interval.
constexpr int kGestureStep = 30;

QString targetName(KRMonkeyClickEventKind::Target target) {
    switch (target) {
    case KRMonkeyClickEventKind::Target::Title:
        return QStringLiteral("title");
    case KRMonkeyClickEventKind::Target::CheckBox:
        return QStringLiteral("check box");
    case KRMonkeyClickEventKind::Target::Handle:
        return QStringLiteral("handle");
    case KRMonkeyClickEventKind::Target::Row:
        return QStringLiteral("row");
    case KRMonkeyClickEventKind::Target::BelowRows:
        return QStringLiteral("below the rows");
    }
    return QString();
}

QString formatted(double value) {
    return QString::number(value, 'f', 0);
}

} // namespace

QString KRMonkeyClickEventKind::describe(const Click& click) {
    QString where = targetName(click.target);
    if (click.target != Target::BelowRows) {
        where += click.target == Target::Row ? QStringLiteral(" %1").arg(click.row)
                                             : QStringLiteral(" row %1").arg(click.row);
    }
    // Where in the target, in hundredths, so a report can be followed by hand.
    where += QStringLiteral(" at (%1%, %2%)").arg(formatted(click.x * 100.0), formatted(click.y * 100.0));
    QString gesture;
    switch (click.gesture) {
    case Gesture::Click:
        gesture = QStringLiteral("click %1").arg(where);
        break;
    case Gesture::DoubleClick:
        gesture = QStringLiteral("double-click %1").arg(where);
        break;
    case Gesture::Drag:
        gesture = QStringLiteral("drag from %1 by (%2, %3)")
                      .arg(where, formatted(click.dragX), formatted(click.dragY));
        break;
    }
    return gesture + KRMonkeyKeys::modifierSuffix(click.modifiers);
}

KRMonkeyEvent KRMonkeyClickEventKind::makeClickEvent(const Click& click) {
    return KRMonkeyEvent{
        QStringLiteral("click"), describe(click), [=](KRMonkeySession& session) {
            Click resolved = click;
            const KRUInteger count = session.list().numberOfItems();
            if (count == 0) {
                resolved.target = Target::BelowRows;
            } else {
                resolved.row = std::min<std::uint64_t>(click.row, count - 1);
            }
            QRectF rect;
            if (resolved.target == Target::BelowRows) {
                rect = session.rectBelowRows();
                // Rows that fill the host leave a sliver just under the last one.
                rect.setHeight(std::max(rect.height(), 2.0));
            } else {
                const KRCheckListItemView& row =
                    *session.list().checkListViewItemViewForItemAtIndex(resolved.row);
                switch (resolved.target) {
                case Target::Title:
                    rect = session.rectInHost(*row.titleTextField());
                    break;
                case Target::CheckBox:
                    rect = session.rectInHost(*row.checkBoxButtonView());
                    break;
                case Target::Handle:
                    rect = session.rectInHost(*row.handleButtonView());
                    break;
                default:
                    rect = session.rectInHost(row);
                    break;
                }
            }
            const QPointF press(rect.left() + rect.width() * click.x, rect.top() + rect.height() * click.y);
            const Qt::KeyboardModifiers modifiers = click.modifiers;
            int at = 0;
            // The pointer comes to the target first, so hover tracking sees it arrive.
            session.sendMouse(QEvent::MouseMove, press, Qt::NoButton, Qt::NoButton, modifiers, at);
            session.sendMouse(QEvent::MouseButtonPress, press, Qt::LeftButton, Qt::LeftButton, modifiers,
                              at += kGestureStep);
            QPointF release = press;
            if (click.gesture == Gesture::Drag) {
                for (int step = 1; step <= kDragSteps; ++step) {
                    const double part = static_cast<double>(step) / kDragSteps;
                    release = press + QPointF(click.dragX * part, click.dragY * part);
                    session.sendMouse(QEvent::MouseMove, release, Qt::NoButton, Qt::LeftButton, modifiers,
                                      at += kGestureStep);
                }
            }
            session.sendMouse(QEvent::MouseButtonRelease, release, Qt::LeftButton, Qt::NoButton, modifiers,
                              at += kGestureStep);
            if (click.gesture == Gesture::DoubleClick) {
                // Qt's order for the second click of a double click.
                session.sendMouse(QEvent::MouseButtonDblClick, press, Qt::LeftButton, Qt::LeftButton,
                                  modifiers, at += kGestureStep);
                session.sendMouse(QEvent::MouseButtonRelease, press, Qt::LeftButton, Qt::NoButton, modifiers,
                                  at += kGestureStep);
            }
            return describe(resolved);
        }};
}

KRMonkeyEvent KRMonkeyClickEventKind::makeEvent(KRMonkeyRandom& random,
                                                const KRMonkeySession& session) const {
    Click click;
    const double target = random.unit();
    if (target < 0.45) {
        click.target = Target::Title;
    } else if (target < 0.65) {
        click.target = Target::CheckBox;
    } else if (target < 0.75) {
        click.target = Target::Handle;
    } else if (target < 0.9) {
        click.target = Target::Row;
    } else {
        click.target = Target::BelowRows;
    }
    const KRUInteger count = session.list().numberOfItems();
    click.row = random.below(std::max<KRUInteger>(count, 1));
    click.x = 0.05 + 0.9 * random.unit();
    click.y = 0.05 + 0.9 * random.unit();
    const double gesture = random.unit();
    if (gesture < 0.7) {
        click.gesture = Gesture::Click;
    } else if (gesture < 0.85) {
        click.gesture = Gesture::DoubleClick;
    } else {
        click.gesture = Gesture::Drag;
        click.dragX = random.between(-80, 80);
        click.dragY = random.between(-90, 90);
    }
    if (random.chance(0.45)) {
        if (random.chance(0.45)) {
            click.modifiers |= Qt::ShiftModifier;
        }
        if (random.chance(0.45)) {
            click.modifiers |= Qt::ControlModifier;
        }
        if (random.chance(0.3)) {
            click.modifiers |= Qt::AltModifier;
        }
    }
    return makeClickEvent(click);
}
