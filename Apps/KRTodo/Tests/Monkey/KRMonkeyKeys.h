#pragma once

#include <QString>
#include <Qt>

// Names of keys and modifiers as a person writes them ("Ctrl+Shift+Up"), for the monkey's reports.
class KRMonkeyKeys {
public:
    static QString keyName(int key);
    // "Ctrl+Alt+" for the modifiers (empty for none), in the order Ctrl, Alt, Meta, Shift.
    static QString modifierPrefix(Qt::KeyboardModifiers modifiers);
    // " +Shift +Ctrl" style suffix for clicks (empty for none).
    static QString modifierSuffix(Qt::KeyboardModifiers modifiers);
    // Text in quotes with everything that is not printable ASCII escaped as \uXXXX, then the text itself,
    // so a report survives a terminal that shows neither right-to-left text nor emoji well.
    static QString quoted(const QString& text);
};
