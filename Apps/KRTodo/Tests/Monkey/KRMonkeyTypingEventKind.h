#pragma once

#include "KRMonkeyEventKind.h"

#include <QStringList>

// Typing: short texts in many scripts (accents, CJK, Hebrew and Arabic, combining marks, emoji made of
// surrogate pairs and joiners), one key event per character, or now and then committed by an input method
// after a moment of composition.
class KRMonkeyTypingEventKind : public KRMonkeyEventKind {
public:
    QString name() const override { return QStringLiteral("type"); }
    KRMonkeyEvent makeEvent(KRMonkeyRandom& random, const KRMonkeySession& session) const override;

    // The characters a keyboard would send one by one: surrogate pairs stay together, combining marks are
    // characters of their own.
    static QStringList keystrokes(const QString& text);
    // Types text one key event per character.
    static KRMonkeyEvent makeTypingEvent(const QString& text);
    // Composes the first half of text with an input method, then commits all of it.
    static KRMonkeyEvent makeInputMethodEvent(const QString& text);
};
