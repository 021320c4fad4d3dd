#pragma once

#include "Geometry/KRGeometry.h"
#include "Views/KREvent.h"
#include "Views/KRWindow.h"

#include <QColor>
#include <QImage>
#include <QTimer>
#include <QWidget>

#include <memory>

class KRView;
class KRTextInputClient;

// The one Qt widget behind a KRWindow: paints the content view with KRRenderer, turns Qt's mouse, key,
// focus and input-method events into KREvents for the window, shows the current KRCursor and drives
// animation frames while the clock is real. Widget coordinates are the window's coordinates (points).
class KRHostWidget : public QWidget {
public:
    explicit KRHostWidget(QWidget* parent = nullptr);
    ~KRHostWidget() override;

    KRWindow& krWindow() { return *m_window; }
    const KRWindow& krWindow() const { return *m_window; }
    KRView* contentView() const;
    void setContentView(std::shared_ptr<KRView> view);

    // What the widget is cleared with before painting; invalid means the palette's window colour.
    QColor clearColor() const { return m_clearColor; }
    void setClearColor(const QColor& color);
    // When set (the default) resizing the widget resizes the content view to match.
    bool resizesContentView() const { return m_resizesContentView; }
    void setResizesContentView(bool resizes) { m_resizesContentView = resizes; }

    // Lays out and renders the whole content view into an image of its frame size times devicePixelRatio
    // (the image carries that ratio). Works without a visible window.
    QImage renderToImage(double devicePixelRatio = 1.0);

    bool isAnimationTimerActive() const { return m_frameTimer.isActive(); }

    // Conversions between Qt and the toolkit, shared with tests.
    static KREventModifierFlags modifierFlagsFromQt(Qt::KeyboardModifiers modifiers);

    QSize sizeHint() const override;
    QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

protected:
    // Losing the focus, the window's activation or the widget's visibility ends the presses still held.
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    void handleMouseDown(QMouseEvent* event, bool doubleClick);
    // Tab past the last key view (Shift+Tab before the first) goes on to the next control of the Qt window
    // that takes the focus by Tab; answers false when the host is the only one, and the loop wraps inside.
    bool passFocusToAdjacentWidget(bool forward);
    // A press whose release will never reach us (the window lost the focus, another press came first)
    // ends with a release where the pointer was last, so that whatever the press began finishes.
    void endHeldPresses();
    void handleKey(QKeyEvent* event, bool down);
    void dispatch(const KREvent& event);
    void noteInput(Qt::KeyboardModifiers modifiers, QPointF widgetPosition);
    void windowWantsDisplay(KRRect dirtyRect);
    void startFrameTimerIfNeeded();
    void frameTimerFired();
    KRTextInputClient* textInputClient() const;
    void paintContent(QPainter& painter, KRRect dirtyRect);

    std::unique_ptr<KRWindow> m_window;
    QColor m_clearColor;
    QTimer m_frameTimer;
    int m_engineListenerId = 0;
    bool m_resizesContentView = true;
    bool m_painting = false;
    // Click counting across presses.
    Qt::MouseButton m_lastDownButton = Qt::NoButton;
    QPointF m_lastDownPosition;
    double m_lastDownTime = -1.0;
    int m_clickCount = 0;
    Qt::MouseButtons m_buttonsDown;
    // Where the last mouse event put the pointer (widget coordinates).
    QPointF m_lastMousePosition;
};
