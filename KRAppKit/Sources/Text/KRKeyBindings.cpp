#include "Text/KRKeyBindings.h"

#include "Views/KRResponder.h"

#include <initializer_list>

namespace {

using Platform = KRKeyBindings::Platform;
using Binding = KRKeyBindings::Binding;

constexpr KREventModifierFlags Shift = KREventModifierFlagShift;
constexpr KREventModifierFlags Control = KREventModifierFlagControl;
constexpr KREventModifierFlags Option = KREventModifierFlagOption;
constexpr KREventModifierFlags Command = KREventModifierFlagCommand;

std::optional<Platform>& platformOverride() {
    static std::optional<Platform> platform;
    return platform;
}

QString letterName(unsigned short keyCode) {
    static const struct {
        unsigned short code;
        char letter;
    } letters[] = {{KRKeyCode::A, 'A'}, {KRKeyCode::B, 'B'}, {KRKeyCode::C, 'C'}, {KRKeyCode::D, 'D'},
                   {KRKeyCode::E, 'E'}, {KRKeyCode::F, 'F'}, {KRKeyCode::G, 'G'}, {KRKeyCode::H, 'H'},
                   {KRKeyCode::I, 'I'}, {KRKeyCode::J, 'J'}, {KRKeyCode::K, 'K'}, {KRKeyCode::L, 'L'},
                   {KRKeyCode::M, 'M'}, {KRKeyCode::N, 'N'}, {KRKeyCode::O, 'O'}, {KRKeyCode::P, 'P'},
                   {KRKeyCode::Q, 'Q'}, {KRKeyCode::R, 'R'}, {KRKeyCode::S, 'S'}, {KRKeyCode::T, 'T'},
                   {KRKeyCode::U, 'U'}, {KRKeyCode::V, 'V'}, {KRKeyCode::W, 'W'}, {KRKeyCode::X, 'X'},
                   {KRKeyCode::Y, 'Y'}, {KRKeyCode::Z, 'Z'}};
    for (const auto& entry : letters) {
        if (entry.code == keyCode) {
            return QString(QLatin1Char(entry.letter));
        }
    }
    return QStringLiteral("#%1").arg(keyCode);
}

QString macKeyName(unsigned short keyCode) {
    switch (keyCode) {
    case KRKeyCode::LeftArrow:
        return QStringLiteral("←");
    case KRKeyCode::RightArrow:
        return QStringLiteral("→");
    case KRKeyCode::UpArrow:
        return QStringLiteral("↑");
    case KRKeyCode::DownArrow:
        return QStringLiteral("↓");
    case KRKeyCode::Delete:
        return QStringLiteral("⌫");
    case KRKeyCode::ForwardDelete:
        return QStringLiteral("⌦");
    case KRKeyCode::Return:
        return QStringLiteral("↩");
    case KRKeyCode::KeypadEnter:
        return QStringLiteral("⌤");
    case KRKeyCode::Tab:
        return QStringLiteral("⇥");
    case KRKeyCode::Escape:
        return QStringLiteral("⎋");
    case KRKeyCode::Home:
        return QStringLiteral("↖");
    case KRKeyCode::End:
        return QStringLiteral("↘");
    case KRKeyCode::PageUp:
        return QStringLiteral("⇞");
    case KRKeyCode::PageDown:
        return QStringLiteral("⇟");
    default:
        return letterName(keyCode);
    }
}

QString otherKeyName(unsigned short keyCode) {
    switch (keyCode) {
    case KRKeyCode::LeftArrow:
        return QStringLiteral("Left");
    case KRKeyCode::RightArrow:
        return QStringLiteral("Right");
    case KRKeyCode::UpArrow:
        return QStringLiteral("Up");
    case KRKeyCode::DownArrow:
        return QStringLiteral("Down");
    case KRKeyCode::Delete:
        return QStringLiteral("Backspace");
    case KRKeyCode::ForwardDelete:
        return QStringLiteral("Delete");
    case KRKeyCode::Return:
        return QStringLiteral("Enter");
    case KRKeyCode::KeypadEnter:
        return QStringLiteral("Keypad Enter");
    case KRKeyCode::Tab:
        return QStringLiteral("Tab");
    case KRKeyCode::Escape:
        return QStringLiteral("Esc");
    case KRKeyCode::Home:
        return QStringLiteral("Home");
    case KRKeyCode::End:
        return QStringLiteral("End");
    case KRKeyCode::PageUp:
        return QStringLiteral("Page Up");
    case KRKeyCode::PageDown:
        return QStringLiteral("Page Down");
    default:
        return letterName(keyCode);
    }
}

// Menu order on the Mac: ⌃⌥⇧⌘ then the key.
QString macKeys(unsigned short keyCode, KREventModifierFlags modifiers) {
    QString keys;
    if (modifiers & Control) {
        keys += QStringLiteral("⌃");
    }
    if (modifiers & Option) {
        keys += QStringLiteral("⌥");
    }
    if (modifiers & Shift) {
        keys += QStringLiteral("⇧");
    }
    if (modifiers & Command) {
        keys += QStringLiteral("⌘");
    }
    return keys + macKeyName(keyCode);
}

// The host reports the PC's Ctrl as Command, Alt as Option and Meta (the Windows key) as Control.
QString otherKeys(unsigned short keyCode, KREventModifierFlags modifiers) {
    QStringList parts;
    if (modifiers & Control) {
        parts << QStringLiteral("Meta");
    }
    if (modifiers & Command) {
        parts << QStringLiteral("Ctrl");
    }
    if (modifiers & Option) {
        parts << QStringLiteral("Alt");
    }
    if (modifiers & Shift) {
        parts << QStringLiteral("Shift");
    }
    parts << otherKeyName(keyCode);
    return parts.join(QLatin1Char('+'));
}

class TableBuilder {
public:
    explicit TableBuilder(Platform platform) : m_platform(platform) {}

    void add(unsigned short keyCode, KREventModifierFlags modifiers,
             std::initializer_list<const char*> selectors) {
        Binding binding{keyCode, modifiers, {}, {}};
        for (const char* selector : selectors) {
            binding.selectors << QString::fromLatin1(selector);
        }
        binding.keys =
            m_platform == Platform::Mac ? macKeys(keyCode, modifiers) : otherKeys(keyCode, modifiers);
        m_table.push_back(std::move(binding));
    }

    std::vector<Binding> take() { return std::move(m_table); }

private:
    Platform m_platform;
    std::vector<Binding> m_table;
};

// Rows both tables share; they differ only in the modifier that moves by words (Option on the Mac,
// Ctrl elsewhere, which the host reports as Command).
void addCaretBindings(TableBuilder& t, KREventModifierFlags wordModifier) {
    using namespace KRKeyCode;
    t.add(LeftArrow, 0, {"moveLeft:"});
    t.add(RightArrow, 0, {"moveRight:"});
    t.add(UpArrow, 0, {"moveUp:"});
    t.add(DownArrow, 0, {"moveDown:"});
    t.add(LeftArrow, Shift, {"moveLeftAndModifySelection:"});
    t.add(RightArrow, Shift, {"moveRightAndModifySelection:"});
    t.add(UpArrow, Shift, {"moveUpAndModifySelection:"});
    t.add(DownArrow, Shift, {"moveDownAndModifySelection:"});
    t.add(LeftArrow, wordModifier, {"moveWordLeft:"});
    t.add(RightArrow, wordModifier, {"moveWordRight:"});
    t.add(LeftArrow, wordModifier | Shift, {"moveWordLeftAndModifySelection:"});
    t.add(RightArrow, wordModifier | Shift, {"moveWordRightAndModifySelection:"});
    t.add(UpArrow, Option, {"moveBackward:", "moveToBeginningOfParagraph:"});
    t.add(DownArrow, Option, {"moveForward:", "moveToEndOfParagraph:"});
    t.add(UpArrow, Option | Shift, {"moveParagraphBackwardAndModifySelection:"});
    t.add(DownArrow, Option | Shift, {"moveParagraphForwardAndModifySelection:"});
}

void addDocumentBindings(TableBuilder& t) {
    using namespace KRKeyCode;
    t.add(UpArrow, Command, {"moveToBeginningOfDocument:"});
    t.add(DownArrow, Command, {"moveToEndOfDocument:"});
    t.add(UpArrow, Shift | Command, {"moveToBeginningOfDocumentAndModifySelection:"});
    t.add(DownArrow, Shift | Command, {"moveToEndOfDocumentAndModifySelection:"});
}

std::vector<Binding> makeMacTable() {
    using namespace KRKeyCode;
    TableBuilder t(Platform::Mac);
    addCaretBindings(t, Option);
    t.add(LeftArrow, Command, {"moveToLeftEndOfLine:"});
    t.add(RightArrow, Command, {"moveToRightEndOfLine:"});
    t.add(LeftArrow, Shift | Command, {"moveToLeftEndOfLineAndModifySelection:"});
    t.add(RightArrow, Shift | Command, {"moveToRightEndOfLineAndModifySelection:"});
    addDocumentBindings(t);
    t.add(A, Control, {"moveToBeginningOfParagraph:"});
    t.add(E, Control, {"moveToEndOfParagraph:"});
    t.add(F, Control, {"moveForward:"});
    t.add(B, Control, {"moveBackward:"});
    t.add(N, Control, {"moveDown:"});
    t.add(P, Control, {"moveUp:"});
    t.add(D, Control, {"deleteForward:"});
    t.add(H, Control, {"deleteBackward:"});
    t.add(K, Control, {"deleteToEndOfParagraph:"});
    t.add(Delete, 0, {"deleteBackward:"});
    t.add(Delete, Shift, {"deleteBackward:"});
    t.add(Delete, Option, {"deleteWordBackward:"});
    t.add(Delete, Command, {"deleteToBeginningOfLine:"});
    t.add(ForwardDelete, 0, {"deleteForward:"});
    t.add(ForwardDelete, Option, {"deleteWordForward:"});
    t.add(Return, 0, {"insertNewline:"});
    t.add(Return, Shift, {"insertNewline:"});
    t.add(Return, Option, {"insertNewlineIgnoringFieldEditor:"});
    t.add(Return, Control, {"insertLineBreak:"});
    t.add(Return, Command, {"insertNewline:"});
    t.add(KeypadEnter, 0, {"insertNewline:"});
    t.add(Tab, 0, {"insertTab:"});
    t.add(Tab, Shift, {"insertBacktab:"});
    t.add(Escape, 0, {"cancelOperation:"});
    t.add(Home, 0, {"scrollToBeginningOfDocument:"});
    t.add(End, 0, {"scrollToEndOfDocument:"});
    t.add(PageUp, 0, {"scrollPageUp:"});
    t.add(PageDown, 0, {"scrollPageDown:"});
    t.add(A, Command, {"selectAll:"});
    t.add(C, Command, {"copy:"});
    t.add(X, Command, {"cut:"});
    t.add(V, Command, {"paste:"});
    t.add(Z, Command, {"undo:"});
    t.add(Z, Shift | Command, {"redo:"});
    return t.take();
}

// PC conventions: Ctrl (the Command flag) moves by words, Home/End go to the line ends.
std::vector<Binding> makeOtherTable() {
    using namespace KRKeyCode;
    TableBuilder t(Platform::Other);
    addCaretBindings(t, Command);
    addDocumentBindings(t);
    t.add(Home, 0, {"moveToLeftEndOfLine:"});
    t.add(End, 0, {"moveToRightEndOfLine:"});
    t.add(Home, Shift, {"moveToLeftEndOfLineAndModifySelection:"});
    t.add(End, Shift, {"moveToRightEndOfLineAndModifySelection:"});
    t.add(Home, Command, {"moveToBeginningOfDocument:"});
    t.add(End, Command, {"moveToEndOfDocument:"});
    t.add(Home, Command | Shift, {"moveToBeginningOfDocumentAndModifySelection:"});
    t.add(End, Command | Shift, {"moveToEndOfDocumentAndModifySelection:"});
    t.add(PageUp, 0, {"pageUp:"});
    t.add(PageDown, 0, {"pageDown:"});
    t.add(Delete, 0, {"deleteBackward:"});
    t.add(Delete, Shift, {"deleteBackward:"});
    t.add(Delete, Command, {"deleteWordBackward:"});
    t.add(ForwardDelete, 0, {"deleteForward:"});
    t.add(ForwardDelete, Command, {"deleteWordForward:"});
    t.add(Return, 0, {"insertNewline:"});
    t.add(Return, Shift, {"insertNewline:"});
    t.add(Return, Option, {"insertNewline:"});
    t.add(Return, Control, {"insertNewline:"});
    t.add(Return, Command, {"insertNewline:"});
    t.add(KeypadEnter, 0, {"insertNewline:"});
    t.add(Tab, 0, {"insertTab:"});
    t.add(Tab, Shift, {"insertBacktab:"});
    t.add(Escape, 0, {"cancelOperation:"});
    t.add(A, Command, {"selectAll:"});
    t.add(C, Command, {"copy:"});
    t.add(X, Command, {"cut:"});
    t.add(V, Command, {"paste:"});
    t.add(Z, Command, {"undo:"});
    t.add(Z, Command | Shift, {"redo:"});
    t.add(Y, Command, {"redo:"});
    return t.take();
}

bool isInsertable(const KREvent& event, Platform platform) {
    if (!event.typesText()) {
        return false;
    }
    const KREventModifierFlags modifiers = event.modifierFlags() & KRKeyBindings::relevantModifiers;
    if (!(modifiers & (Command | Control))) {
        return true;
    }
    // AltGr reaches PCs as Ctrl+Alt; the characters it types (@ on German keyboards) are text.
    return platform == Platform::Other && (modifiers & Command) && (modifiers & Option) &&
           !(modifiers & Control);
}

} // namespace

KRKeyBindings::Platform KRKeyBindings::currentPlatform() {
    if (const std::optional<Platform>& forced = platformOverride()) {
        return *forced;
    }
#ifdef Q_OS_MACOS
    return Platform::Mac;
#else
    return Platform::Other;
#endif
}

void KRKeyBindings::setPlatformOverride(std::optional<Platform> platform) {
    platformOverride() = platform;
}

const std::vector<KRKeyBindings::Binding>& KRKeyBindings::bindings(Platform platform) {
    static const std::vector<Binding> mac = makeMacTable();
    static const std::vector<Binding> other = makeOtherTable();
    return platform == Platform::Mac ? mac : other;
}

QList<KRSelector> KRKeyBindings::selectorsForEvent(const KREvent& event, Platform platform) {
    QList<KRSelector> selectors;
    if (event.type() != KREventType::KeyDown) {
        return selectors;
    }
    const KREventModifierFlags modifiers = event.modifierFlags() & relevantModifiers;
    for (const Binding& binding : bindings(platform)) {
        if (binding.keyCode == event.keyCode() && binding.modifiers == modifiers) {
            for (const QString& name : binding.selectors) {
                selectors.append(KRSelector(name));
            }
            break;
        }
    }
    return selectors;
}

void KRKeyBindings::interpretKeyEvent(KRResponder& responder, const KREvent& event) {
    interpretKeyEvent(responder, event, currentPlatform());
}

void KRKeyBindings::interpretKeyEvent(KRResponder& responder, const KREvent& event, Platform platform) {
    const QList<KRSelector> selectors = selectorsForEvent(event, platform);
    if (!selectors.isEmpty()) {
        for (const KRSelector& selector : selectors) {
            responder.doCommandBySelector(selector);
        }
    } else if (isInsertable(event, platform)) {
        responder.insertText(event.characters());
    } else {
        // Callers watch for "noop:" to learn that a key chord meant nothing to the text system.
        responder.doCommandBySelector(KRSelector("noop:"));
    }
}

void KRKeyBindings::install() {
    KRResponder::setKeyEventInterpreter(
        [](KRResponder& responder, const KREvent& event) { interpretKeyEvent(responder, event); });
}

QString KRKeyBindings::markdownTable(Platform platform) {
    QString table = QStringLiteral("| Keys | Command(s) |\n| --- | --- |\n");
    for (const Binding& binding : bindings(platform)) {
        QStringList commands;
        for (const QString& selector : binding.selectors) {
            commands << QLatin1Char('`') + selector + QLatin1Char('`');
        }
        table += QStringLiteral("| %1 | %2 |\n").arg(binding.keys, commands.join(QStringLiteral(", ")));
    }
    return table;
}
