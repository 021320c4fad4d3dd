#pragma once

#include "KRMonkeyEventKind.h"

// Resizes the window, from narrow enough to wrap most titles to wide: the list follows the viewport's width
// and lays its rows out again.
class KRMonkeyResizeEventKind : public KRMonkeyEventKind {
public:
    QString name() const override { return QStringLiteral("resize"); }
    KRMonkeyEvent makeEvent(KRMonkeyRandom& random, const KRMonkeySession& session) const override;
};
