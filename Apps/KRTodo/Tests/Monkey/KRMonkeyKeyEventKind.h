#pragma once

#include "KRMonkeyEventKind.h"

#include <Qt>

// Keys of the keyboard command table (Windows and Linux), sent to the host widget: half of the time one of
// the table's combinations exactly, otherwise one of its keys with any of Shift, Ctrl, Alt (and rarely Meta).
class KRMonkeyKeyEventKind : public KRMonkeyEventKind {
public:
    QString name() const override { return QStringLiteral("key"); }
    KRMonkeyEvent makeEvent(KRMonkeyRandom& random, const KRMonkeySession& session) const override;

    // The key with those modifiers as Qt reports it: Shift+Tab is Backtab, letters carry their text.
    static KRMonkeyEvent makeKeyEvent(int key, Qt::KeyboardModifiers modifiers);
};
