#include "KRMonkeyKeys.h"

#include <QKeySequence>

QString KRMonkeyKeys::keyName(int key) {
    switch (key) {
    case Qt::Key_Return:
        return QStringLiteral("Enter");
    case Qt::Key_Enter:
        return QStringLiteral("Keypad Enter");
    case Qt::Key_Backtab:
        return QStringLiteral("Backtab");
    case Qt::Key_PageUp:
        return QStringLiteral("Page Up");
    case Qt::Key_PageDown:
        return QStringLiteral("Page Down");
    default:
        return QKeySequence(key).toString(QKeySequence::PortableText);
    }
}

QString KRMonkeyKeys::modifierPrefix(Qt::KeyboardModifiers modifiers) {
    QString prefix;
    if (modifiers & Qt::ControlModifier) {
        prefix += QStringLiteral("Ctrl+");
    }
    if (modifiers & Qt::AltModifier) {
        prefix += QStringLiteral("Alt+");
    }
    if (modifiers & Qt::MetaModifier) {
        prefix += QStringLiteral("Meta+");
    }
    if (modifiers & Qt::ShiftModifier) {
        prefix += QStringLiteral("Shift+");
    }
    return prefix;
}

QString KRMonkeyKeys::modifierSuffix(Qt::KeyboardModifiers modifiers) {
    QString suffix;
    if (modifiers & Qt::ShiftModifier) {
        suffix += QStringLiteral(" +Shift");
    }
    if (modifiers & Qt::ControlModifier) {
        suffix += QStringLiteral(" +Ctrl");
    }
    if (modifiers & Qt::AltModifier) {
        suffix += QStringLiteral(" +Alt");
    }
    if (modifiers & Qt::MetaModifier) {
        suffix += QStringLiteral(" +Meta");
    }
    return suffix;
}

QString KRMonkeyKeys::quoted(const QString& text) {
    QString escaped;
    bool plain = true;
    for (const QChar character : text) {
        const char16_t unit = character.unicode();
        if (unit >= 0x20 && unit < 0x7f && unit != u'"' && unit != u'\\') {
            escaped += character;
        } else {
            plain = false;
            escaped += QStringLiteral("\\u%1").arg(static_cast<unsigned>(unit), 4, 16, QLatin1Char('0'));
        }
    }
    if (plain) {
        return QStringLiteral("\"%1\"").arg(text);
    }
    return QStringLiteral("\"%1\" (%2)").arg(escaped, text);
}
