#pragma once

#include <QHashFunctions>
#include <QString>

// A command or action name, holding the selector's own text ("moveUp:", "noop:").
// Key bindings produce them, doCommandBySelector consumes them, and logs print them verbatim.
class KRSelector {
public:
    KRSelector() = default;
    explicit KRSelector(const char* name) : m_name(QString::fromLatin1(name)) {}
    explicit KRSelector(QString name) : m_name(std::move(name)) {}

    const QString& name() const { return m_name; }
    bool isNull() const { return m_name.isEmpty(); }

    friend bool operator==(const KRSelector& a, const KRSelector& b) { return a.m_name == b.m_name; }
    friend bool operator==(const KRSelector& a, const char* name) { return a.m_name == QLatin1String(name); }

private:
    QString m_name;
};

inline size_t qHash(const KRSelector& selector, size_t seed = 0) {
    return qHash(selector.name(), seed);
}
inline KRSelector KRSelectorFromString(const QString& name) {
    return KRSelector(name);
}
inline QString KRStringFromSelector(const KRSelector& selector) {
    return selector.name();
}
