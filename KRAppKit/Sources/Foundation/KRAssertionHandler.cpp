#include "Foundation/KRAssertionHandler.h"

#include "Foundation/KRLog.h"

KRInternalInconsistencyException::KRInternalInconsistencyException(QString method, const KRObject* object,
                                                                   QString file, int line, QString message)
    : std::runtime_error(message.toUtf8().toStdString()), m_method(std::move(method)), m_object(object),
      m_file(std::move(file)), m_line(line), m_message(std::move(message)) {}

KRGenericException::KRGenericException(QString message)
    : std::runtime_error(message.toUtf8().toStdString()), m_message(std::move(message)) {}

namespace {

std::shared_ptr<KRAssertionHandler>& installedHandler() {
    static std::shared_ptr<KRAssertionHandler> handler;
    return handler;
}

} // namespace

void KRAssertionHandler::handleFailureInMethod(const QString& method, const KRObject* object,
                                               const QString& file, int line, const QString& message) {
    KRLog(QStringLiteral("*** Assertion failure in %1, %2:%3: %4")
              .arg(method, file, QString::number(line), message));
    throw KRInternalInconsistencyException(method, object, file, line, message);
}

KRAssertionHandler& KRAssertionHandler::currentHandler() {
    static KRAssertionHandler defaultHandler;
    const std::shared_ptr<KRAssertionHandler>& installed = installedHandler();
    return installed ? *installed : defaultHandler;
}

std::shared_ptr<KRAssertionHandler>
KRAssertionHandler::setCurrentHandler(std::shared_ptr<KRAssertionHandler> handler) {
    std::shared_ptr<KRAssertionHandler> previous = std::move(installedHandler());
    installedHandler() = std::move(handler);
    return previous;
}
