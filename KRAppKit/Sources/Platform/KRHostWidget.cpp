#include "Platform/KRHostWidget.h"

#include "Animation/KRAnimationEngine.h"
#include "Foundation/KRClock.h"
#include "Text/KRTextView.h"
#include "Views/KRCursor.h"
#include "Views/KRRenderer.h"
#include "Views/KRTextInputClient.h"
#include "Views/KRView.h"

#include <QCursor>
#include <QElapsedTimer>
#include <QFocusEvent>
#include <QGuiApplication>
#include <QInputMethod>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QResizeEvent>
#include <QStyleHints>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

// Hardware-independent codes of the modifier keys themselves (reported with FlagsChanged).
constexpr unsigned short kKeyCodeCommand = 55;
constexpr unsigned short kKeyCodeShift = 56;
constexpr unsigned short kKeyCodeCapsLock = 57;
constexpr unsigned short kKeyCodeOption = 58;
constexpr unsigned short kKeyCodeControl = 59;
// Keys without a toolkit code still deliver their text.
constexpr unsigned short kKeyCodeUnknown = 0xFFFF;

// A point no tracking area reaches: reported when the pointer leaves the widget.
constexpr double kFarAway = -1.0e6;

std::vector<KRHostWidget*>& hosts() {
    static std::vector<KRHostWidget*> list;
    return list;
}

Qt::CursorShape qtCursorShape(KRCursor::Shape shape) {
    switch (shape) {
    case KRCursor::Shape::Arrow:
        return Qt::ArrowCursor;
    case KRCursor::Shape::IBeam:
        return Qt::IBeamCursor;
    case KRCursor::Shape::PointingHand:
        return Qt::PointingHandCursor;
    case KRCursor::Shape::ClosedHand:
        return Qt::ClosedHandCursor;
    case KRCursor::Shape::OpenHand:
        return Qt::OpenHandCursor;
    }
    return Qt::ArrowCursor;
}

// The cursor belongs to the host under the pointer; without one (offscreen, or the pointer elsewhere)
// every host takes it so the next entry shows the right shape.
void applyCursor(KRCursor cursor) {
    std::vector<KRHostWidget*> targets;
    for (KRHostWidget* host : hosts()) {
        if (host->underMouse()) {
            targets.push_back(host);
        }
    }
    if (targets.empty()) {
        targets = hosts();
    }
    for (KRHostWidget* host : targets) {
        host->setCursor(qtCursorShape(cursor.shape()));
    }
}

double monotonicMilliseconds() {
    static QElapsedTimer timer;
    if (!timer.isValid()) {
        timer.start();
    }
    return static_cast<double>(timer.nsecsElapsed()) / 1.0e6;
}

struct KeyInfo {
    unsigned short keyCode = kKeyCodeUnknown;
    QString characters;
    QString charactersIgnoringModifiers;
    KREventModifierFlags extraFlags = 0;
    bool known = false;
};

KeyInfo namedKey(unsigned short code, char16_t character, KREventModifierFlags flags = 0) {
    const QString text{QChar(character)};
    return KeyInfo{code, text, text, flags, true};
}

KeyInfo functionKey(unsigned short code, char16_t character, KREventModifierFlags flags = 0) {
    return namedKey(code, character, flags | KREventModifierFlagFunction);
}

// Keys that type a character: the toolkit code and the unshifted character (US layout).
bool characterKey(int key, unsigned short& code, QChar& base) {
    static const unsigned short letters[26] = {
        KRKeyCode::A, KRKeyCode::B, KRKeyCode::C, KRKeyCode::D, KRKeyCode::E, KRKeyCode::F, KRKeyCode::G,
        KRKeyCode::H, KRKeyCode::I, KRKeyCode::J, KRKeyCode::K, KRKeyCode::L, KRKeyCode::M, KRKeyCode::N,
        KRKeyCode::O, KRKeyCode::P, KRKeyCode::Q, KRKeyCode::R, KRKeyCode::S, KRKeyCode::T, KRKeyCode::U,
        KRKeyCode::V, KRKeyCode::W, KRKeyCode::X, KRKeyCode::Y, KRKeyCode::Z};
    static const unsigned short digits[10] = {
        KRKeyCode::Digit0, KRKeyCode::Digit1, KRKeyCode::Digit2, KRKeyCode::Digit3, KRKeyCode::Digit4,
        KRKeyCode::Digit5, KRKeyCode::Digit6, KRKeyCode::Digit7, KRKeyCode::Digit8, KRKeyCode::Digit9};
    if (key >= Qt::Key_A && key <= Qt::Key_Z) {
        code = letters[key - Qt::Key_A];
        base = QChar(static_cast<char16_t>(u'a' + (key - Qt::Key_A)));
        return true;
    }
    if (key >= Qt::Key_0 && key <= Qt::Key_9) {
        code = digits[key - Qt::Key_0];
        base = QChar(static_cast<char16_t>(u'0' + (key - Qt::Key_0)));
        return true;
    }
    struct Entry {
        int key;
        unsigned short code;
        char16_t base;
    };
    static const Entry punctuation[] = {
        {Qt::Key_Minus, KRKeyCode::Minus, u'-'},
        {Qt::Key_Underscore, KRKeyCode::Minus, u'-'},
        {Qt::Key_Equal, KRKeyCode::Equal, u'='},
        {Qt::Key_Plus, KRKeyCode::Equal, u'='},
        {Qt::Key_BracketLeft, KRKeyCode::LeftBracket, u'['},
        {Qt::Key_BraceLeft, KRKeyCode::LeftBracket, u'['},
        {Qt::Key_BracketRight, KRKeyCode::RightBracket, u']'},
        {Qt::Key_BraceRight, KRKeyCode::RightBracket, u']'},
        {Qt::Key_Apostrophe, KRKeyCode::Quote, u'\''},
        {Qt::Key_QuoteDbl, KRKeyCode::Quote, u'\''},
        {Qt::Key_Semicolon, KRKeyCode::Semicolon, u';'},
        {Qt::Key_Colon, KRKeyCode::Semicolon, u';'},
        {Qt::Key_Backslash, KRKeyCode::Backslash, u'\\'},
        {Qt::Key_Bar, KRKeyCode::Backslash, u'\\'},
        {Qt::Key_Comma, KRKeyCode::Comma, u','},
        {Qt::Key_Less, KRKeyCode::Comma, u','},
        {Qt::Key_Period, KRKeyCode::Period, u'.'},
        {Qt::Key_Greater, KRKeyCode::Period, u'.'},
        {Qt::Key_Slash, KRKeyCode::Slash, u'/'},
        {Qt::Key_Question, KRKeyCode::Slash, u'/'},
        {Qt::Key_QuoteLeft, KRKeyCode::Grave, u'`'},
        {Qt::Key_AsciiTilde, KRKeyCode::Grave, u'`'},
        {Qt::Key_Exclam, KRKeyCode::Digit1, u'1'},
        {Qt::Key_At, KRKeyCode::Digit2, u'2'},
        {Qt::Key_NumberSign, KRKeyCode::Digit3, u'3'},
        {Qt::Key_Dollar, KRKeyCode::Digit4, u'4'},
        {Qt::Key_Percent, KRKeyCode::Digit5, u'5'},
        {Qt::Key_AsciiCircum, KRKeyCode::Digit6, u'6'},
        {Qt::Key_Ampersand, KRKeyCode::Digit7, u'7'},
        {Qt::Key_Asterisk, KRKeyCode::Digit8, u'8'},
        {Qt::Key_ParenLeft, KRKeyCode::Digit9, u'9'},
        {Qt::Key_ParenRight, KRKeyCode::Digit0, u'0'},
    };
    for (const Entry& entry : punctuation) {
        if (entry.key == key) {
            code = entry.code;
            base = QChar(entry.base);
            return true;
        }
    }
    return false;
}

KeyInfo keyInfo(const QKeyEvent& event) {
    const int key = event.key();
    // Arrow keys count as keypad keys, as they do on the desktop the key codes come from.
    const KREventModifierFlags arrow = KREventModifierFlagNumericPad;
    switch (key) {
    case Qt::Key_Return:
        return namedKey(KRKeyCode::Return, u'\r');
    case Qt::Key_Enter:
        return namedKey(KRKeyCode::KeypadEnter, u'\x03', KREventModifierFlagNumericPad);
    case Qt::Key_Tab:
        return namedKey(KRKeyCode::Tab, u'\t');
    case Qt::Key_Backtab: {
        KeyInfo info = namedKey(KRKeyCode::Tab, u'\x19');
        info.charactersIgnoringModifiers = QStringLiteral("\t");
        info.extraFlags = KREventModifierFlagShift;
        return info;
    }
    case Qt::Key_Backspace:
        return namedKey(KRKeyCode::Delete, u'\x7f');
    case Qt::Key_Delete:
        return functionKey(KRKeyCode::ForwardDelete, u'\xF728');
    case Qt::Key_Escape:
        return namedKey(KRKeyCode::Escape, u'\x1b');
    case Qt::Key_Space:
        return namedKey(KRKeyCode::Space, u' ');
    case Qt::Key_Home:
        return functionKey(KRKeyCode::Home, u'\xF729');
    case Qt::Key_End:
        return functionKey(KRKeyCode::End, u'\xF72B');
    case Qt::Key_PageUp:
        return functionKey(KRKeyCode::PageUp, u'\xF72C');
    case Qt::Key_PageDown:
        return functionKey(KRKeyCode::PageDown, u'\xF72D');
    case Qt::Key_Up:
        return functionKey(KRKeyCode::UpArrow, u'\xF700', arrow);
    case Qt::Key_Down:
        return functionKey(KRKeyCode::DownArrow, u'\xF701', arrow);
    case Qt::Key_Left:
        return functionKey(KRKeyCode::LeftArrow, u'\xF702', arrow);
    case Qt::Key_Right:
        return functionKey(KRKeyCode::RightArrow, u'\xF703', arrow);
    case Qt::Key_Help:
    case Qt::Key_Insert:
        return functionKey(KRKeyCode::Help, u'\xF746');
    default:
        break;
    }
    if (key >= Qt::Key_F1 && key <= Qt::Key_F12) {
        static const unsigned short codes[12] = {
            KRKeyCode::F1, KRKeyCode::F2, KRKeyCode::F3, KRKeyCode::F4,  KRKeyCode::F5,  KRKeyCode::F6,
            KRKeyCode::F7, KRKeyCode::F8, KRKeyCode::F9, KRKeyCode::F10, KRKeyCode::F11, KRKeyCode::F12};
        const int index = key - Qt::Key_F1;
        return functionKey(codes[index], static_cast<char16_t>(0xF704 + index));
    }

    const QString text = event.text();
    // Control characters (Ctrl+C gives U+0003) say nothing about the key; the key itself does.
    const bool printable = !text.isEmpty() && text.at(0).unicode() >= 0x20 && text.at(0).unicode() != 0x7f;
    unsigned short code = kKeyCodeUnknown;
    QChar base;
    if (characterKey(key, code, base)) {
        KeyInfo info;
        info.keyCode = code;
        info.known = true;
        info.charactersIgnoringModifiers = QString(base);
        if (printable) {
            info.characters = text;
        } else if (event.modifiers() & Qt::ShiftModifier) {
            // Qt names shifted punctuation by its own character and letters by their capital.
            info.characters = (key >= Qt::Key_A && key <= Qt::Key_Z)
                                  ? QString(base.toUpper())
                                  : QString(QChar(static_cast<char16_t>(key)));
        } else {
            info.characters = QString(base);
        }
        return info;
    }
    KeyInfo info;
    if (printable) {
        info.characters = text;
        info.charactersIgnoringModifiers = text.toLower();
    }
    return info;
}

// The flag a modifier key itself contributes, with its key code; false for other keys.
bool modifierKey(int key, KREventModifierFlags& flag, unsigned short& code) {
    switch (key) {
    case Qt::Key_Shift:
        flag = KREventModifierFlagShift;
        code = kKeyCodeShift;
        return true;
    case Qt::Key_Control:
        flag = KREventModifierFlagCommand;
        code = kKeyCodeCommand;
        return true;
    case Qt::Key_Meta:
        flag = KREventModifierFlagControl;
        code = kKeyCodeControl;
        return true;
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
        flag = KREventModifierFlagOption;
        code = kKeyCodeOption;
        return true;
    case Qt::Key_CapsLock:
        flag = 0;
        code = kKeyCodeCapsLock;
        return true;
    default:
        return false;
    }
}

} // namespace

KRHostWidget::KRHostWidget(QWidget* parent) : QWidget(parent), m_window(std::make_unique<KRWindow>()) {
    // Typing needs key bindings, and text fields a field editor, in every window a host shows.
    KRTextView::installTextSystem();
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_InputMethodEnabled);
    setAttribute(Qt::WA_OpaquePaintEvent);

    m_window->setDisplayHandler([this](KRRect dirtyRect) { windowWantsDisplay(dirtyRect); });
    m_window->setKeyViewLoopExitHandler([this](bool forward) { return passFocusToAdjacentWidget(forward); });

    if (hosts().empty()) {
        KRCursor::setCursorChangeHandler(applyCursor);
    }
    hosts().push_back(this);

    m_frameTimer.setTimerType(Qt::PreciseTimer);
    m_frameTimer.setInterval(16);
    QObject::connect(&m_frameTimer, &QTimer::timeout, this, [this] { frameTimerFired(); });
    m_engineListenerId = KRAnimationEngine::shared().addStartListener([this] { startFrameTimerIfNeeded(); });
    startFrameTimerIfNeeded();
}

KRHostWidget::~KRHostWidget() {
    KRAnimationEngine::shared().removeStartListener(m_engineListenerId);
    m_frameTimer.stop();
    m_window->setDisplayHandler({});
    m_window->setKeyViewLoopExitHandler({});
    auto& list = hosts();
    list.erase(std::remove(list.begin(), list.end(), this), list.end());
    if (list.empty()) {
        KRCursor::setCursorChangeHandler({});
    }
}

KRView* KRHostWidget::contentView() const {
    return m_window->contentView();
}

void KRHostWidget::setContentView(std::shared_ptr<KRView> view) {
    m_window->setContentView(std::move(view));
    updateGeometry();
    update();
}

void KRHostWidget::setClearColor(const QColor& color) {
    m_clearColor = color;
    update();
}

QSize KRHostWidget::sizeHint() const {
    if (const KRView* content = contentView()) {
        const KRSize size = content->frame().size;
        return QSize(static_cast<int>(std::ceil(size.width)), static_cast<int>(std::ceil(size.height)));
    }
    return QWidget::sizeHint();
}

KREventModifierFlags KRHostWidget::modifierFlagsFromQt(Qt::KeyboardModifiers modifiers) {
    KREventModifierFlags flags = 0;
    if (modifiers & Qt::ShiftModifier) {
        flags |= KREventModifierFlagShift;
    }
    // Ctrl plays the part of Command (copy, paste, select all) and Meta that of Control.
    if (modifiers & Qt::ControlModifier) {
        flags |= KREventModifierFlagCommand;
    }
    if (modifiers & Qt::MetaModifier) {
        flags |= KREventModifierFlagControl;
    }
    if (modifiers & Qt::AltModifier) {
        flags |= KREventModifierFlagOption;
    }
    if (modifiers & Qt::KeypadModifier) {
        flags |= KREventModifierFlagNumericPad;
    }
    return flags;
}

// --- Painting -------------------------------------------------------------------------------------------

void KRHostWidget::windowWantsDisplay(KRRect dirtyRect) {
    // A pass run from paintEvent is painted by that paintEvent.
    if (m_painting) {
        return;
    }
    if (KRRectIsNull(dirtyRect) || KRRectIsEmpty(dirtyRect)) {
        return;
    }
    update(KRToQRectF(dirtyRect).toAlignedRect());
}

void KRHostWidget::paintContent(QPainter& painter, KRRect dirtyRect) {
    const QRectF area = KRToQRectF(dirtyRect);
    painter.save();
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(area, m_clearColor.isValid() ? m_clearColor : palette().color(QPalette::Window));
    painter.restore();
    if (const KRView* content = contentView()) {
        painter.setFont(font());
        KRRenderer::paintView(painter, *content, dirtyRect);
    }
}

void KRHostWidget::paintEvent(QPaintEvent* event) {
    m_window->setBackingScaleFactor(devicePixelRatioF());
    m_painting = true;
    m_window->updateIfNeeded();
    const KRRect dirty = m_window->takeDirtyRect();
    m_painting = false;

    const QRect exposed = event->rect();
    QPainter painter(this);
    paintContent(painter, KRFromQRectF(QRectF(exposed)));

    // Layout done just now may have marked places this paint does not reach.
    if (!KRRectIsNull(dirty) && !KRRectIsEmpty(dirty)) {
        const QRect dirtyPixels = KRToQRectF(dirty).toAlignedRect();
        if (!exposed.contains(dirtyPixels)) {
            update(dirtyPixels);
        }
    }
}

QImage KRHostWidget::renderToImage(double devicePixelRatio) {
    if (!(devicePixelRatio > 0.0)) {
        devicePixelRatio = 1.0;
    }
    m_window->setBackingScaleFactor(devicePixelRatio);
    m_window->updateIfNeeded();
    const KRView* content = contentView();
    const KRRect area = content ? content->frame() : KRRectMake(0.0, 0.0, width(), height());
    const QSize pixels(static_cast<int>(std::ceil(area.size.width * devicePixelRatio)),
                       static_cast<int>(std::ceil(area.size.height * devicePixelRatio)));
    QImage image(pixels.expandedTo(QSize(1, 1)), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        painter.translate(-area.origin.x, -area.origin.y);
        paintContent(painter, area);
    }
    return image;
}

void KRHostWidget::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    m_window->setBackingScaleFactor(devicePixelRatioF());
    if (m_resizesContentView) {
        if (KRView* content = contentView()) {
            content->setFrameSize(KRSizeMake(event->size().width(), event->size().height()));
        }
    }
}

// --- Animation frames -------------------------------------------------------------------------------------

void KRHostWidget::startFrameTimerIfNeeded() {
    // A manual clock ticks the engine itself on every advance.
    if (KRClock::isManual() || m_frameTimer.isActive() ||
        !KRAnimationEngine::shared().hasRunningAnimations()) {
        return;
    }
    m_frameTimer.start();
}

void KRHostWidget::frameTimerFired() {
    KRAnimationEngine& engine = KRAnimationEngine::shared();
    if (KRClock::isManual()) {
        m_frameTimer.stop();
        return;
    }
    engine.tick();
    // Animated views marked what moved; hand that to Qt now rather than a run loop turn later.
    m_window->updateIfNeeded();
    if (!engine.hasRunningAnimations()) {
        m_frameTimer.stop();
    }
}

// --- Input ------------------------------------------------------------------------------------------------

bool KRHostWidget::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::FocusOut:
    case QEvent::WindowDeactivate:
    case QEvent::Hide:
        endHeldPresses();
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

void KRHostWidget::endHeldPresses() {
    const Qt::MouseButtons held = m_buttonsDown;
    m_buttonsDown = Qt::NoButton;
    const KRPoint location = KRFromQPointF(m_lastMousePosition);
    if (held & Qt::LeftButton) {
        dispatch(KREvent::mouseEvent(KREventType::LeftMouseUp, location, KREvent::currentModifierFlags(),
                                     m_window.get(), m_clickCount, KRClock::now()));
    }
    if (held & Qt::RightButton) {
        dispatch(KREvent::mouseEvent(KREventType::RightMouseUp, location, KREvent::currentModifierFlags(),
                                     m_window.get(), m_clickCount, KRClock::now()));
    }
}

void KRHostWidget::noteInput(Qt::KeyboardModifiers modifiers, QPointF widgetPosition) {
    KREvent::setCurrentModifierFlags(modifierFlagsFromQt(modifiers));
    KREvent::setMouseLocation(KRFromQPointF(mapToGlobal(widgetPosition)));
    m_window->setScreenOrigin(KRFromQPointF(mapToGlobal(QPointF(0.0, 0.0))));
}

void KRHostWidget::dispatch(const KREvent& event) {
    m_window->sendEvent(event);
    // The first responder may have changed: input methods ask again whether and where to compose.
    if (hasFocus() && (event.isKeyEvent() || event.type() == KREventType::LeftMouseDown)) {
        if (QInputMethod* inputMethod = QGuiApplication::inputMethod()) {
            inputMethod->update(Qt::ImEnabled | Qt::ImCursorRectangle);
        }
    }
}

void KRHostWidget::handleMouseDown(QMouseEvent* event, bool doubleClick) {
    // Another press while one is held: the held one lost its release (or the user pressed a second
    // button). Qt follows the second press of a double click with a double-click event of the same button,
    // which continues that press rather than ending it.
    if (m_buttonsDown != Qt::NoButton &&
        !(doubleClick && m_buttonsDown == Qt::MouseButtons(event->button()))) {
        endHeldPresses();
    }
    const QPointF position = event->position();
    noteInput(event->modifiers(), position);
    m_lastMousePosition = position;
    KREventType type;
    if (event->button() == Qt::LeftButton) {
        type = KREventType::LeftMouseDown;
    } else if (event->button() == Qt::RightButton) {
        type = KREventType::RightMouseDown;
    } else {
        event->ignore();
        return;
    }
    const double now =
        event->timestamp() != 0 ? static_cast<double>(event->timestamp()) : monotonicMilliseconds();
    const QStyleHints* hints = QGuiApplication::styleHints();
    const double interval = hints ? hints->mouseDoubleClickInterval() : 400.0;
    const double distance = hints ? hints->mouseDoubleClickDistance() : 5.0;
    const bool continuesClicks = m_lastDownTime >= 0.0 && event->button() == m_lastDownButton &&
                                 now - m_lastDownTime <= interval &&
                                 (position - m_lastDownPosition).manhattanLength() <= distance;
    int count = continuesClicks ? m_clickCount + 1 : 1;
    if (doubleClick) {
        count = std::max(count, 2);
    }
    m_clickCount = count;
    m_lastDownTime = now;
    m_lastDownButton = event->button();
    m_lastDownPosition = position;
    m_buttonsDown |= event->button();

    event->accept();
    dispatch(KREvent::mouseEvent(type, KRFromQPointF(position), modifierFlagsFromQt(event->modifiers()),
                                 m_window.get(), count, KRClock::now()));
}

void KRHostWidget::mousePressEvent(QMouseEvent* event) {
    handleMouseDown(event, false);
}

void KRHostWidget::mouseDoubleClickEvent(QMouseEvent* event) {
    handleMouseDown(event, true);
}

void KRHostWidget::mouseMoveEvent(QMouseEvent* event) {
    const QPointF position = event->position();
    noteInput(event->modifiers(), position);
    // A held button that is up by now was released where we did not see it: the press ends here.
    if (m_buttonsDown & ~event->buttons()) {
        m_lastMousePosition = position;
        endHeldPresses();
    }
    m_lastMousePosition = position;
    KREventType type = KREventType::MouseMoved;
    int count = 0;
    // Only a press we saw begin is dragged; a press that was ended early moves the pointer only.
    const Qt::MouseButtons buttons = event->buttons() & m_buttonsDown;
    if (buttons & Qt::LeftButton) {
        type = KREventType::LeftMouseDragged;
        count = m_clickCount;
    } else if (buttons & Qt::RightButton) {
        type = KREventType::RightMouseDragged;
        count = m_clickCount;
    }
    event->accept();
    dispatch(KREvent::mouseEvent(type, KRFromQPointF(position), modifierFlagsFromQt(event->modifiers()),
                                 m_window.get(), count, KRClock::now()));
}

void KRHostWidget::mouseReleaseEvent(QMouseEvent* event) {
    const QPointF position = event->position();
    noteInput(event->modifiers(), position);
    KREventType type;
    if (event->button() == Qt::LeftButton) {
        type = KREventType::LeftMouseUp;
    } else if (event->button() == Qt::RightButton) {
        type = KREventType::RightMouseUp;
    } else {
        event->ignore();
        return;
    }
    m_lastMousePosition = position;
    event->accept();
    // The press already ended (its release was made up when it was lost).
    if (!(m_buttonsDown & event->button())) {
        return;
    }
    m_buttonsDown &= ~Qt::MouseButtons(event->button());
    dispatch(KREvent::mouseEvent(type, KRFromQPointF(position), modifierFlagsFromQt(event->modifiers()),
                                 m_window.get(), m_clickCount, KRClock::now()));
}

void KRHostWidget::leaveEvent(QEvent* event) {
    QWidget::leaveEvent(event);
    // Buttons held mean a drag that Qt keeps delivering to us; tracking areas catch up on release.
    if (m_buttonsDown != Qt::NoButton) {
        return;
    }
    dispatch(KREvent::mouseEvent(KREventType::MouseMoved, KRPointMake(kFarAway, kFarAway),
                                 KREvent::currentModifierFlags(), m_window.get(), 0, KRClock::now()));
}

void KRHostWidget::handleKey(QKeyEvent* event, bool down) {
    noteInput(event->modifiers(), mapFromGlobal(QCursor::pos()).toPointF());
    KREventModifierFlags flags = modifierFlagsFromQt(event->modifiers());

    KREventModifierFlags modifierFlag = 0;
    unsigned short modifierCode = 0;
    if (modifierKey(event->key(), modifierFlag, modifierCode)) {
        // Qt reports the state before the key on some platforms and after it on others; the key decides.
        flags = down ? (flags | modifierFlag) : (flags & ~modifierFlag);
        KREvent::setCurrentModifierFlags(flags);
        event->accept();
        dispatch(KREvent::keyEvent(KREventType::FlagsChanged, flags, QString(), QString(), modifierCode,
                                   m_window.get(), false, KRClock::now()));
        return;
    }

    const KeyInfo info = keyInfo(*event);
    if (!info.known && info.characters.isEmpty()) {
        event->ignore();
        return;
    }
    flags |= info.extraFlags;
    event->accept();
    dispatch(KREvent::keyEvent(down ? KREventType::KeyDown : KREventType::KeyUp, flags, info.characters,
                               info.charactersIgnoringModifiers, info.keyCode, m_window.get(),
                               event->isAutoRepeat(), KRClock::now()));
}

void KRHostWidget::keyPressEvent(QKeyEvent* event) {
    handleKey(event, true);
}

void KRHostWidget::keyReleaseEvent(QKeyEvent* event) {
    handleKey(event, false);
}

bool KRHostWidget::focusNextPrevChild(bool) {
    // Tab and Shift-Tab belong to the window's key view loop.
    return false;
}

bool KRHostWidget::passFocusToAdjacentWidget(bool forward) {
    for (QWidget* widget = forward ? nextInFocusChain() : previousInFocusChain(); widget && widget != this;
         widget = forward ? widget->nextInFocusChain() : widget->previousInFocusChain()) {
        const bool takesTabFocus = (widget->focusPolicy() & Qt::TabFocus) == Qt::TabFocus;
        if (takesTabFocus && widget->window() == window() && widget->isVisibleTo(window()) &&
            widget->isEnabled() && !widget->focusProxy()) {
            widget->setFocus(forward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
            return true;
        }
    }
    return false;
}

void KRHostWidget::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    // Tabbing in from a control beside the host starts the window's loop at its near end.
    if (event->reason() == Qt::TabFocusReason) {
        m_window->selectFirstKeyView();
    } else if (event->reason() == Qt::BacktabFocusReason) {
        m_window->selectLastKeyView();
    }
    m_window->setKeyWindow(true);
    if (KRView* content = contentView()) {
        content->setNeedsDisplay();
    }
    update();
}

void KRHostWidget::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    m_window->setKeyWindow(false);
    if (KRView* content = contentView()) {
        content->setNeedsDisplay();
    }
    update();
}

// --- Input methods --------------------------------------------------------------------------------------

KRTextInputClient* KRHostWidget::textInputClient() const {
    KRResponder* responder = m_window->firstResponder();
    if (!dynamic_cast<KRView*>(responder)) {
        return nullptr;
    }
    return dynamic_cast<KRTextInputClient*>(responder);
}

void KRHostWidget::inputMethodEvent(QInputMethodEvent* event) {
    KRTextInputClient* client = textInputClient();
    KRResponder* responder = m_window->firstResponder();
    if (!client || !responder) {
        event->ignore();
        return;
    }
    const QString preedit = event->preeditString();
    int cursor = static_cast<int>(preedit.size());
    for (const QInputMethodEvent::Attribute& attribute : event->attributes()) {
        if (attribute.type == QInputMethodEvent::Cursor) {
            cursor = std::clamp(attribute.start, 0, static_cast<int>(preedit.size()));
        }
    }
    // Committed text replaces the marked text; what is still being composed becomes the new marked text.
    if (!event->commitString().isEmpty()) {
        responder->insertText(event->commitString());
    }
    if (!preedit.isEmpty()) {
        client->setMarkedText(preedit, cursor);
    } else if (event->commitString().isEmpty()) {
        client->setMarkedText(QString(), 0);
    }
    event->accept();
}

QVariant KRHostWidget::inputMethodQuery(Qt::InputMethodQuery query) const {
    switch (query) {
    case Qt::ImEnabled:
        return textInputClient() != nullptr;
    case Qt::ImCursorRectangle:
        if (const KRTextInputClient* client = textInputClient()) {
            return KRToQRectF(client->firstRectForCaret()).toAlignedRect();
        }
        return QRect();
    default:
        return QWidget::inputMethodQuery(query);
    }
}
