#include "KRMonkeyRenderEventKind.h"

#include "KRMonkeyRandom.h"
#include "KRMonkeySession.h"

#include "KRTodoWindow.h"

#include <QImage>

#include <stdexcept>

KRMonkeyEvent KRMonkeyRenderEventKind::makeEvent(KRMonkeyRandom& random, const KRMonkeySession&) const {
    const double ratio = random.chance(0.5) ? 1.0 : 2.0;
    const QString description = QStringLiteral("render the list at %1x").arg(ratio);
    return KRMonkeyEvent{name(), description, [=](KRMonkeySession& session) {
                             const QImage image = session.window().renderCheckListToImage(ratio);
                             if (image.isNull()) {
                                 throw std::runtime_error("rendering the list gave no image");
                             }
                             return description;
                         }};
}
