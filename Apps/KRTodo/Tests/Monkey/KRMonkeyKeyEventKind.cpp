#include "KRMonkeyKeyEventKind.h"

#include "KRMonkeyKeys.h"
#include "KRMonkeyRandom.h"
#include "KRMonkeySession.h"

#include <vector>

namespace {

struct Combination {
    int key;
    Qt::KeyboardModifiers modifiers;
};

constexpr Qt::KeyboardModifiers kNone = Qt::NoModifier;
constexpr Qt::KeyboardModifiers kShift = Qt::ShiftModifier;
constexpr Qt::KeyboardModifiers kCtrl = Qt::ControlModifier;
constexpr Qt::KeyboardModifiers kAlt = Qt::AltModifier;
constexpr Qt::KeyboardModifiers kMeta = Qt::MetaModifier;

// The README's table for Windows and Linux, row by row.
const std::vector<Combination>& commandTable() {
    static const std::vector<Combination> table = {
        {Qt::Key_Left, kNone},
        {Qt::Key_Right, kNone},
        {Qt::Key_Up, kNone},
        {Qt::Key_Down, kNone},
        {Qt::Key_Left, kShift},
        {Qt::Key_Right, kShift},
        {Qt::Key_Up, kShift},
        {Qt::Key_Down, kShift},
        {Qt::Key_Left, kCtrl},
        {Qt::Key_Right, kCtrl},
        {Qt::Key_Left, kCtrl | kShift},
        {Qt::Key_Right, kCtrl | kShift},
        {Qt::Key_Up, kAlt},
        {Qt::Key_Down, kAlt},
        {Qt::Key_Up, kAlt | kShift},
        {Qt::Key_Down, kAlt | kShift},
        {Qt::Key_Up, kCtrl},
        {Qt::Key_Down, kCtrl},
        {Qt::Key_Up, kCtrl | kShift},
        {Qt::Key_Down, kCtrl | kShift},
        {Qt::Key_Home, kNone},
        {Qt::Key_End, kNone},
        {Qt::Key_Home, kShift},
        {Qt::Key_End, kShift},
        {Qt::Key_Home, kCtrl},
        {Qt::Key_End, kCtrl},
        {Qt::Key_Home, kCtrl | kShift},
        {Qt::Key_End, kCtrl | kShift},
        {Qt::Key_PageUp, kNone},
        {Qt::Key_PageDown, kNone},
        {Qt::Key_Backspace, kNone},
        {Qt::Key_Backspace, kShift},
        {Qt::Key_Backspace, kCtrl},
        {Qt::Key_Delete, kNone},
        {Qt::Key_Delete, kCtrl},
        {Qt::Key_Return, kNone},
        {Qt::Key_Return, kShift},
        {Qt::Key_Return, kAlt},
        {Qt::Key_Return, kMeta},
        {Qt::Key_Return, kCtrl},
        {Qt::Key_Enter, Qt::KeypadModifier},
        {Qt::Key_Tab, kNone},
        {Qt::Key_Tab, kShift},
        {Qt::Key_Escape, kNone},
        {Qt::Key_A, kCtrl},
        {Qt::Key_C, kCtrl},
        {Qt::Key_X, kCtrl},
        {Qt::Key_V, kCtrl},
        {Qt::Key_Z, kCtrl},
        {Qt::Key_Z, kCtrl | kShift},
        {Qt::Key_Y, kCtrl},
    };
    return table;
}

// The keys of the table, each once.
const std::vector<int>& commandKeys() {
    static const std::vector<int> keys = {
        Qt::Key_Left,   Qt::Key_Right,  Qt::Key_Up,       Qt::Key_Down,      Qt::Key_Home,
        Qt::Key_End,    Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Backspace, Qt::Key_Delete,
        Qt::Key_Return, Qt::Key_Enter,  Qt::Key_Tab,      Qt::Key_Escape,    Qt::Key_A,
        Qt::Key_C,      Qt::Key_X,      Qt::Key_V,        Qt::Key_Z,         Qt::Key_Y,
    };
    return keys;
}

// The text Qt gives a key on Linux: control characters for the named keys and for Ctrl+letter.
QString textForKey(int key, Qt::KeyboardModifiers modifiers) {
    switch (key) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return QStringLiteral("\r");
    case Qt::Key_Tab:
        return QStringLiteral("\t");
    case Qt::Key_Backspace:
        return QStringLiteral("\b");
    case Qt::Key_Delete:
        return QStringLiteral("\x7f");
    case Qt::Key_Escape:
        return QStringLiteral("\x1b");
    default:
        break;
    }
    if (key >= Qt::Key_A && key <= Qt::Key_Z) {
        if (modifiers & Qt::ControlModifier) {
            return QString(QChar(static_cast<char16_t>(key - Qt::Key_A + 1)));
        }
        const char16_t letter =
            static_cast<char16_t>((modifiers & Qt::ShiftModifier) ? key : key - 'A' + 'a');
        return QString(QChar(letter));
    }
    return QString();
}

} // namespace

KRMonkeyEvent KRMonkeyKeyEventKind::makeKeyEvent(int key, Qt::KeyboardModifiers modifiers) {
    if (key == Qt::Key_Tab && (modifiers & Qt::ShiftModifier)) {
        key = Qt::Key_Backtab;
    }
    if (key == Qt::Key_Enter) {
        modifiers |= Qt::KeypadModifier;
    }
    const QString text = textForKey(key == Qt::Key_Backtab ? Qt::Key_Tab : key, modifiers);
    const QString description = QStringLiteral("key %1%2")
                                    .arg(KRMonkeyKeys::modifierPrefix(modifiers),
                                         KRMonkeyKeys::keyName(key == Qt::Key_Backtab ? Qt::Key_Tab : key));
    return KRMonkeyEvent{QStringLiteral("key"), description, [=](KRMonkeySession& session) {
                             session.sendKey(key, modifiers, text);
                             return description;
                         }};
}

KRMonkeyEvent KRMonkeyKeyEventKind::makeEvent(KRMonkeyRandom& random, const KRMonkeySession&) const {
    if (random.chance(0.5)) {
        const Combination& combination = random.pick(commandTable());
        return makeKeyEvent(combination.key, combination.modifiers);
    }
    const int key = random.pick(commandKeys());
    Qt::KeyboardModifiers modifiers;
    if (random.chance(0.35)) {
        modifiers |= Qt::ShiftModifier;
    }
    if (random.chance(0.3)) {
        modifiers |= Qt::ControlModifier;
    }
    if (random.chance(0.25)) {
        modifiers |= Qt::AltModifier;
    }
    if (random.chance(0.05)) {
        modifiers |= Qt::MetaModifier;
    }
    return makeKeyEvent(key, modifiers);
}
