#pragma once

#include <QString>

#include <memory>
#include <stdexcept>

class KRObject;

// Raised by the default assertion handler: an internal inconsistency or a misuse of an interface.
class KRInternalInconsistencyException : public std::runtime_error {
public:
    KRInternalInconsistencyException(QString method, const KRObject* object, QString file, int line,
                                     QString message);
    const QString& method() const { return m_method; }
    const KRObject* object() const { return m_object; }
    const QString& file() const { return m_file; }
    int line() const { return m_line; }
    const QString& message() const { return m_message; }

private:
    QString m_method;
    const KRObject* m_object;
    QString m_file;
    int m_line;
    QString m_message;
};

// Raised directly (not through the handler) for generic failures the caller can anticipate.
class KRGenericException : public std::runtime_error {
public:
    explicit KRGenericException(QString message);
    const QString& message() const { return m_message; }

private:
    QString m_message;
};

// Receives every failed assertion of the toolkit and of the components built on it. The default handler
// logs the failure and throws KRInternalInconsistencyException; tests may install one that only records.
class KRAssertionHandler {
public:
    virtual ~KRAssertionHandler() = default;

    virtual void handleFailureInMethod(const QString& method, const KRObject* object, const QString& file,
                                       int line, const QString& message);

    static KRAssertionHandler& currentHandler();
    // Installs a handler; null restores the default. Returns the previous one.
    static std::shared_ptr<KRAssertionHandler> setCurrentHandler(std::shared_ptr<KRAssertionHandler> handler);
};

// Fails through the current handler when condition is false. method is the selector-style method name.
#define KRAssert(condition, method, object, file, line, message)                                             \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            KRAssertionHandler::currentHandler().handleFailureInMethod((method), (object), (file), (line),   \
                                                                       (message));                           \
        }                                                                                                    \
    } while (false)
