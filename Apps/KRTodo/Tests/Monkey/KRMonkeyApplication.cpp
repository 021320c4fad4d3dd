#include "KRMonkeyApplication.h"

#include <cxxabi.h>

#include <cstdlib>
#include <exception>
#include <memory>
#include <typeinfo>

namespace {

QString demangled(const char* name) {
    int status = 0;
    std::unique_ptr<char, void (*)(void*)> readable(abi::__cxa_demangle(name, nullptr, nullptr, &status),
                                                    std::free);
    return QString::fromUtf8(status == 0 && readable ? readable.get() : name);
}

} // namespace

KRMonkeyApplication::KRMonkeyApplication(int& argc, char** argv) : QApplication(argc, argv) {}

bool KRMonkeyApplication::notify(QObject* receiver, QEvent* event) {
    try {
        return QApplication::notify(receiver, event);
    } catch (...) {
        std::optional<QString>& caught = caughtException();
        if (!caught) {
            caught = describeCurrentException();
        }
        return false;
    }
}

std::optional<QString> KRMonkeyApplication::takeCaughtException() {
    std::optional<QString> caught;
    caught.swap(caughtException());
    return caught;
}

QString KRMonkeyApplication::describeCurrentException() {
    const std::type_info* type = abi::__cxa_current_exception_type();
    const QString typeName = type ? demangled(type->name()) : QStringLiteral("unknown exception");
    try {
        throw;
    } catch (const std::exception& exception) {
        return QStringLiteral("%1 thrown: %2").arg(typeName, QString::fromUtf8(exception.what()));
    } catch (...) {
        return QStringLiteral("%1 thrown").arg(typeName);
    }
}

std::optional<QString>& KRMonkeyApplication::caughtException() {
    static std::optional<QString> caught;
    return caught;
}
