#pragma once

#include <QString>
#include <QStringList>

#include <random>
#include <vector>

// To-do titles for benchmarks: seven in ten are a few words; the rest run to two or three lines at list
// widths. The same seed gives every program the same titles.
inline std::vector<QString> KRBenchmarkTitles(int count) {
    static const QStringList words = {
        QStringLiteral("buy"),      QStringLiteral("milk"),    QStringLiteral("call"),
        QStringLiteral("the"),      QStringLiteral("plumber"), QStringLiteral("renew"),
        QStringLiteral("passport"), QStringLiteral("book"),    QStringLiteral("flights"),
        QStringLiteral("Lisbon"),   QStringLiteral("report"),  QStringLiteral("review"),
        QStringLiteral("budget"),   QStringLiteral("and"),     QStringLiteral("before"),
        QStringLiteral("Friday"),   QStringLiteral("email"),   QStringLiteral("Sam"),
        QStringLiteral("about"),    QStringLiteral("slides")};
    std::mt19937 random(42);
    std::vector<QString> titles;
    titles.reserve(static_cast<std::size_t>(count));
    for (int index = 0; index < count; ++index) {
        const bool wrapped = random() % 10 >= 7;
        const int wordCount =
            wrapped ? 14 + static_cast<int>(random() % 14) : 2 + static_cast<int>(random() % 4);
        QStringList title;
        for (int word = 0; word < wordCount; ++word) {
            title << words[static_cast<qsizetype>(random() % static_cast<unsigned>(words.size()))];
        }
        titles.push_back(title.join(QLatin1Char(' ')));
    }
    return titles;
}
