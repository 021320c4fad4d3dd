#pragma once

#include <QString>

// What went wrong after an event: an exception that escaped while it was delivered or settled, or a broken
// invariant between the list and its store.
struct KRMonkeyFailure {
    QString message;
    // What a shorter sequence must fail with to fail "the same way": the invariant's name, or the exception's
    // text with every number blanked out (indexes in it change as the sequence shrinks).
    QString signature;

    static KRMonkeyFailure exception(const QString& description);
    static KRMonkeyFailure brokenInvariant(const QString& invariant, const QString& details);
};
