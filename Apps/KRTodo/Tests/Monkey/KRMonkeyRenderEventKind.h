#pragma once

#include "KRMonkeyEventKind.h"

// Draws the whole list, as a paint of the window would, at 1x or 2x. The window is never on screen here, so
// without this the drawing code would not run between the other events.
class KRMonkeyRenderEventKind : public KRMonkeyEventKind {
public:
    QString name() const override { return QStringLiteral("render"); }
    KRMonkeyEvent makeEvent(KRMonkeyRandom& random, const KRMonkeySession& session) const override;
};
