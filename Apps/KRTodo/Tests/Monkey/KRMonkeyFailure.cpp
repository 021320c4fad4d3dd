#include "KRMonkeyFailure.h"

#include <QRegularExpression>

KRMonkeyFailure KRMonkeyFailure::exception(const QString& description) {
    static const QRegularExpression numbers(QStringLiteral("[0-9]+"));
    QString signature = description;
    signature.replace(numbers, QStringLiteral("#"));
    return KRMonkeyFailure{description, signature};
}

KRMonkeyFailure KRMonkeyFailure::brokenInvariant(const QString& invariant, const QString& details) {
    return KRMonkeyFailure{QStringLiteral("%1: %2").arg(invariant, details), invariant};
}
