#pragma once

#include "KRMonkeyEventKind.h"

// KRTodo's menu keys, pressed through Qt's shortcut map as a user presses them (Ctrl+Q is left out: it
// quits). The menus own some of them and leave the others (Delete, the moves) to the list.
class KRMonkeyShortcutEventKind : public KRMonkeyEventKind {
public:
    QString name() const override { return QStringLiteral("shortcut"); }
    KRMonkeyEvent makeEvent(KRMonkeyRandom& random, const KRMonkeySession& session) const override;
};
