#include "KRMonkeyTypingEventKind.h"

#include "KRMonkeyKeys.h"
#include "KRMonkeyRandom.h"
#include "KRMonkeySession.h"

#include <vector>

namespace {

const std::vector<QString>& fragments() {
    static const std::vector<QString> pool = {
        QStringLiteral("a"),
        QStringLiteral("x"),
        QStringLiteral("Milk"),
        QStringLiteral("buy 2 tickets"),
        QStringLiteral(" "),
        QStringLiteral("  "),
        QStringLiteral("-"),
        QStringLiteral("!?"),
        QStringLiteral("é"),
        QStringLiteral("naïve café"),
        QStringLiteral("Straße"),
        QStringLiteral("日本語"),
        QStringLiteral("中文字"),
        QStringLiteral("한국어"),
        QStringLiteral("שלום"),
        QStringLiteral("مرحبا"),
        QStringLiteral("e\u0301"),                    // e and a combining acute accent
        QStringLiteral("a\u0308\u0323"),              // two combining marks on one letter
        QStringLiteral("\U0001F600"),                 // an emoji: one surrogate pair
        QStringLiteral("\U0001F44D\U0001F3FD"),       // thumbs up with a skin tone
        QStringLiteral("\U0001F1EB\U0001F1F7"),       // a flag: two regional indicators
        QStringLiteral("\U0001F469\u200D\U0001F4BB"), // joined by a zero-width joiner
        QStringLiteral("\u200F"),                     // a right-to-left mark
        QStringLiteral("\U0001D11E"),                 // outside the basic plane, not an emoji
    };
    return pool;
}

bool isAscii(const QString& text) {
    for (const QChar character : text) {
        if (character.unicode() >= 0x80) {
            return false;
        }
    }
    return true;
}

// The key Qt names for a character: Latin-1 keys are named by their capital; others have no key of their own.
int keyForCharacter(const QString& character) {
    if (character.size() != 1) {
        return 0;
    }
    const QChar upper = character.at(0).toUpper();
    return upper.unicode() < 0x100 ? upper.unicode() : 0;
}

} // namespace

QStringList KRMonkeyTypingEventKind::keystrokes(const QString& text) {
    QStringList strokes;
    for (qsizetype index = 0; index < text.size(); ++index) {
        if (text.at(index).isHighSurrogate() && index + 1 < text.size() &&
            text.at(index + 1).isLowSurrogate()) {
            strokes << text.mid(index, 2);
            ++index;
        } else {
            strokes << QString(text.at(index));
        }
    }
    return strokes;
}

KRMonkeyEvent KRMonkeyTypingEventKind::makeTypingEvent(const QString& text) {
    const QString description = QStringLiteral("type %1").arg(KRMonkeyKeys::quoted(text));
    return KRMonkeyEvent{QStringLiteral("type"), description, [=](KRMonkeySession& session) {
                             for (const QString& stroke : keystrokes(text)) {
                                 const bool capital = stroke.size() == 1 && stroke.at(0).isUpper() &&
                                                      stroke.at(0).unicode() < 0x80;
                                 session.sendKey(keyForCharacter(stroke),
                                                 capital ? Qt::ShiftModifier : Qt::NoModifier, stroke);
                             }
                             return description;
                         }};
}

KRMonkeyEvent KRMonkeyTypingEventKind::makeInputMethodEvent(const QString& text) {
    const QStringList strokes = keystrokes(text);
    const QString preedit = strokes.mid(0, (strokes.size() + 1) / 2).join(QString());
    const QString description = QStringLiteral("compose %1 and commit %2")
                                    .arg(KRMonkeyKeys::quoted(preedit), KRMonkeyKeys::quoted(text));
    return KRMonkeyEvent{QStringLiteral("type"), description, [=](KRMonkeySession& session) {
                             session.sendInputMethod(preedit, text);
                             return description;
                         }};
}

KRMonkeyEvent KRMonkeyTypingEventKind::makeEvent(KRMonkeyRandom& random, const KRMonkeySession&) const {
    QString text;
    const int pieces = random.between(1, 3);
    for (int piece = 0; piece < pieces; ++piece) {
        text += random.pick(fragments());
    }
    if (!isAscii(text) && random.chance(0.3)) {
        return makeInputMethodEvent(text);
    }
    return makeTypingEvent(text);
}
