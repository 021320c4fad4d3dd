#include "Views/KREvent.h"

#include "Views/KRView.h"

namespace {

KREventModifierFlags s_currentModifierFlags = 0;
KRPoint s_mouseLocation;

} // namespace

KREvent KREvent::mouseEvent(KREventType type, KRPoint locationInWindow, KREventModifierFlags modifierFlags,
                            KRWindow* window, int clickCount, double timestamp) {
    KREvent event;
    event.m_type = type;
    event.m_locationInWindow = locationInWindow;
    event.m_modifierFlags = modifierFlags;
    event.m_window = window;
    event.m_clickCount = clickCount;
    event.m_timestamp = timestamp;
    return event;
}

KREvent KREvent::keyEvent(KREventType type, KREventModifierFlags modifierFlags, const QString& characters,
                          const QString& charactersIgnoringModifiers, unsigned short keyCode,
                          KRWindow* window, bool isARepeat, double timestamp) {
    KREvent event;
    event.m_type = type;
    event.m_modifierFlags = modifierFlags;
    event.m_characters = characters;
    event.m_charactersIgnoringModifiers = charactersIgnoringModifiers;
    event.m_keyCode = keyCode;
    event.m_window = window;
    event.m_isARepeat = isARepeat;
    event.m_timestamp = timestamp;
    return event;
}

KREvent KREvent::scrollEvent(KRPoint locationInWindow, double deltaX, double deltaY,
                             KREventModifierFlags modifierFlags, KRWindow* window) {
    KREvent event;
    event.m_type = KREventType::ScrollWheel;
    event.m_locationInWindow = locationInWindow;
    event.m_deltaX = deltaX;
    event.m_deltaY = deltaY;
    event.m_modifierFlags = modifierFlags;
    event.m_window = window;
    return event;
}

KREvent KREvent::trackingEvent(KREventType type, KRPoint locationInWindow, KRTrackingArea* trackingArea,
                               KREventModifierFlags modifierFlags, KRWindow* window) {
    KREvent event;
    event.m_type = type;
    event.m_locationInWindow = locationInWindow;
    event.m_trackingArea = trackingArea;
    event.m_modifierFlags = modifierFlags;
    event.m_window = window;
    return event;
}

KRPoint KREvent::locationInView(const KRView* view) const {
    if (!view) {
        return m_locationInWindow;
    }
    return view->convertPointFromView(m_locationInWindow, nullptr);
}

bool KREvent::isMouseEvent() const {
    const int type = static_cast<int>(m_type);
    return (type >= 1 && type <= 9) || m_type == KREventType::ScrollWheel;
}

KREventModifierFlags KREvent::currentModifierFlags() {
    return s_currentModifierFlags;
}

void KREvent::setCurrentModifierFlags(KREventModifierFlags flags) {
    s_currentModifierFlags = flags;
}

KRPoint KREvent::mouseLocation() {
    return s_mouseLocation;
}

void KREvent::setMouseLocation(KRPoint screenLocation) {
    s_mouseLocation = screenLocation;
}

bool KREvent::typesText() const {
    if (m_characters.isEmpty()) {
        return false;
    }
    const qsizetype length = m_characters.size();
    for (qsizetype index = 0; index < length; ++index) {
        const QChar character = m_characters.at(index);
        char32_t codePoint = character.unicode();
        if (character.isHighSurrogate() && index + 1 < length &&
            m_characters.at(index + 1).isLowSurrogate()) {
            codePoint = QChar::surrogateToUcs4(character, m_characters.at(index + 1));
            ++index;
        } else if (character.isSurrogate()) {
            return false;
        }
        if (!QChar::isPrint(codePoint) && QChar::category(codePoint) != QChar::Other_Format) {
            return false;
        }
    }
    return true;
}
