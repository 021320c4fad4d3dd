#pragma once

#include <QString>
#include <QStringList>

// The toolkit's NSLog: one line to stderr, or to the innermost KRLogCapture while one exists.
void KRLog(const QString& message);

// Collects every KRLog line while it lives (tests use it to check warnings).
class KRLogCapture {
public:
    KRLogCapture();
    ~KRLogCapture();
    KRLogCapture(const KRLogCapture&) = delete;
    KRLogCapture& operator=(const KRLogCapture&) = delete;

    const QStringList& lines() const { return m_lines; }
    void clear() { m_lines.clear(); }

private:
    friend void KRLog(const QString& message);
    QStringList m_lines;
    KRLogCapture* m_previous;
};
