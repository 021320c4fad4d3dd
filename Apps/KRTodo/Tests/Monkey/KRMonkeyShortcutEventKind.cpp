#include "KRMonkeyShortcutEventKind.h"

#include "KRMonkeyKeys.h"
#include "KRMonkeyRandom.h"
#include "KRMonkeySession.h"

#include <vector>

namespace {

struct Shortcut {
    Qt::Key key;
    Qt::KeyboardModifiers modifiers;
};

const std::vector<Shortcut>& menuShortcuts() {
    static const std::vector<Shortcut> shortcuts = {
        {Qt::Key_N, Qt::ControlModifier},
        {Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier},
        {Qt::Key_Up, Qt::ControlModifier},
        {Qt::Key_Down, Qt::ControlModifier},
        {Qt::Key_Up, Qt::ControlModifier | Qt::AltModifier},
        {Qt::Key_Down, Qt::ControlModifier | Qt::AltModifier},
        {Qt::Key_D, Qt::ControlModifier},
        {Qt::Key_D, Qt::ControlModifier | Qt::ShiftModifier},
        {Qt::Key_A, Qt::ControlModifier},
        {Qt::Key_C, Qt::ControlModifier},
        {Qt::Key_X, Qt::ControlModifier},
        {Qt::Key_V, Qt::ControlModifier},
        {Qt::Key_Delete, Qt::NoModifier},
        {Qt::Key_Z, Qt::ControlModifier},
        {Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier},
        {Qt::Key_Y, Qt::ControlModifier},
    };
    return shortcuts;
}

} // namespace

KRMonkeyEvent KRMonkeyShortcutEventKind::makeEvent(KRMonkeyRandom& random, const KRMonkeySession&) const {
    const Shortcut shortcut = random.pick(menuShortcuts());
    const QString description =
        QStringLiteral("shortcut %1%2")
            .arg(KRMonkeyKeys::modifierPrefix(shortcut.modifiers), KRMonkeyKeys::keyName(shortcut.key));
    return KRMonkeyEvent{name(), description, [=](KRMonkeySession& session) {
                             session.sendShortcut(shortcut.key, shortcut.modifiers);
                             return description;
                         }};
}
