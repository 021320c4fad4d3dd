#pragma once

#include <QApplication>
#include <QString>

#include <optional>

// The monkey's application. Qt does not catch what an event handler throws, and an exception that unwinds
// through Qt's own frames may take the process down or leave Qt half-way through a delivery; this
// application catches every exception at the edge of the handler's delivery, keeps the first one for the
// monkey to report, and carries on as if the event had been ignored.
class KRMonkeyApplication : public QApplication {
public:
    KRMonkeyApplication(int& argc, char** argv);

    bool notify(QObject* receiver, QEvent* event) override;

    // The first exception caught since the last call, described with its type; empty when none was.
    static std::optional<QString> takeCaughtException();
    // Describes the exception being handled (call from a catch block).
    static QString describeCurrentException();

private:
    static std::optional<QString>& caughtException();
};
