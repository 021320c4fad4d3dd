#pragma once

#include "Foundation/KRSelector.h"
#include "Views/KREvent.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

class KRResponder;

// The text key bindings: which command selectors a key-down stands for, or the text it types.
// Keys follow each platform's conventions; the host reports Qt's Ctrl as the Command flag and Meta as
// Control.
class KRKeyBindings {
public:
    enum class Platform { Mac, Other };

    struct Binding {
        unsigned short keyCode;
        KREventModifierFlags modifiers;
        QStringList selectors;
        QString keys; // "⌘←" on the Mac, "Ctrl+Left" elsewhere
    };

    // The platform's conventions in effect; tests pin one with setPlatformOverride.
    static Platform currentPlatform();
    static void setPlatformOverride(std::optional<Platform> platform);

    static const std::vector<Binding>& bindings(Platform platform);

    // The commands bound to the key, in the order to perform them; empty when the key is no command key.
    static QList<KRSelector> selectorsForEvent(const KREvent& event, Platform platform);

    // Bound commands go to doCommandBySelector, printable text to insertText, anything else is "noop:".
    static void interpretKeyEvent(KRResponder& responder, const KREvent& event);
    static void interpretKeyEvent(KRResponder& responder, const KREvent& event, Platform platform);

    // Makes KRResponder::interpretKeyEvents use these bindings.
    static void install();

    // The table as Markdown (Keys | Command(s)), for the documentation.
    static QString markdownTable(Platform platform);

    // The modifiers bindings tell apart; Function, NumericPad and Caps Lock come with keys, not chords.
    static constexpr KREventModifierFlags relevantModifiers =
        KREventModifierFlagShift | KREventModifierFlagControl | KREventModifierFlagOption |
        KREventModifierFlagCommand;
};
