#pragma once

// Readable Qt strings in GoogleTest's failure messages.

#include <QString>
#include <QStringList>

#include <ostream>

inline void PrintTo(const QString& string, std::ostream* os) {
    *os << '"' << string.toStdString() << '"';
}

inline void PrintTo(const QStringList& strings, std::ostream* os) {
    *os << '[' << strings.join(QStringLiteral(", ")).toStdString() << ']';
}
