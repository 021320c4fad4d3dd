#include "KRMonkeyResizeEventKind.h"

#include "KRMonkeyRandom.h"
#include "KRMonkeySession.h"

#include "KRTodoWindow.h"

KRMonkeyEvent KRMonkeyResizeEventKind::makeEvent(KRMonkeyRandom& random, const KRMonkeySession&) const {
    const int width = random.between(160, 900);
    const int height = random.between(100, 800);
    const QString description = QStringLiteral("resize the window to %1 x %2").arg(width).arg(height);
    return KRMonkeyEvent{name(), description, [=](KRMonkeySession& session) {
                             session.window().resize(width, height);
                             return description;
                         }};
}
