#include "KRCheckListWidget.h"

#include "KRCheckListDefaults.h"
#include "KRCheckListView.h"

#include "Foundation/KRClock.h"
#include "Foundation/KRRunLoop.h"
#include "Platform/KRHostWidget.h"
#include "Text/KRTextView.h"
#include "Views/KRWindow.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointer>
#include <QScrollBar>

#include <algorithm>
#include <cmath>

namespace {

// How many rounds of events settle() runs at most; a round in which nothing changes ends it earlier.
constexpr int kMaximumSettleRounds = 50;

} // namespace

KRCheckListWidget::KRCheckListWidget(QWidget* parent)
    : QScrollArea(parent),
      m_checkListView(std::make_shared<KRCheckListView>(KRRectMake(0.0, 0.0, 0.0, 0.0))) {
    m_hostWidget = new KRHostWidget;
    m_hostWidget->setContentView(m_checkListView);
    m_hostWidget->setResizesContentView(true);
    m_hostWidget->installEventFilter(this);
    m_hostWidget->krWindow().setDidUpdateHandler([this] { listDidUpdate(); });

    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWidgetResizable(true);
    setWidget(m_hostWidget);
    // The list inside takes the focus; the frame around it is no stop of its own for Tab.
    setFocusPolicy(Qt::NoFocus);
    setFocusProxy(m_hostWidget);
}

KRCheckListWidget::~KRCheckListWidget() {
    m_hostWidget->krWindow().setDidUpdateHandler({});
    m_hostWidget->removeEventFilter(this);
}

// After each pass of the list: the host follows a new fitting size on a later turn (resizing it now would
// lay the list out again inside its own pass), and a caret that moved is brought into view.
void KRCheckListWidget::listDidUpdate() {
    const int fittingHeight = static_cast<int>(std::ceil(m_checkListView->lastSizeThatFits().height));
    if (fittingHeight != m_hostWidget->minimumHeight()) {
        scheduleHeightUpdate();
    }
    const QRect caret = caretRectInHostWidget();
    if (caret != m_lastCaretRect) {
        m_lastCaretRect = caret;
        if (!caret.isNull()) {
            scheduleCaretReveal();
        }
    }
}

void KRCheckListWidget::scheduleHeightUpdate() {
    if (m_heightUpdateScheduled) {
        return;
    }
    m_heightUpdateScheduled = true;
    KRRunLoop::main().performAfterDelay(0.0, [widget = QPointer<KRCheckListWidget>(this)] {
        if (widget) {
            widget->updateHeight();
        }
    });
}

void KRCheckListWidget::updateHeight() {
    m_heightUpdateScheduled = false;
    // A zero size asks for the fitting size of the last layout pass without laying out again.
    const KRSize fitting = m_checkListView->sizeThatFits(KRSizeZero);
    m_hostWidget->setMinimumHeight(static_cast<int>(std::ceil(fitting.height)));
}

// Caret
// -------------------------------------------------------------------------------------------------------

QRect KRCheckListWidget::caretRectInHostWidget() const {
    // While a title is edited its field editor is the window's first responder.
    const auto* editor = dynamic_cast<const KRTextView*>(m_hostWidget->krWindow().firstResponder());
    if (!editor || !editor->window()) {
        return QRect();
    }
    // The host's coordinates are its window's.
    const KRRect caret = editor->convertRectToView(editor->insertionPointRect(), nullptr);
    if (KRRectIsNull(caret)) {
        return QRect();
    }
    return KRToQRectF(caret).toAlignedRect();
}

void KRCheckListWidget::scheduleCaretReveal() {
    if (m_caretRevealScheduled) {
        return;
    }
    m_caretRevealScheduled = true;
    KRRunLoop::main().performAfterDelay(0.0, [widget = QPointer<KRCheckListWidget>(this)] {
        if (widget) {
            widget->revealCaret();
        }
    });
}

void KRCheckListWidget::revealCaret() {
    m_caretRevealScheduled = false;
    // The caret's place is known after the list's pass, and reachable once the host has its new height.
    m_hostWidget->krWindow().updateIfNeeded();
    if (m_heightUpdateScheduled) {
        updateHeight();
    }
    const QRect caret = caretRectInHostWidget();
    if (caret.isNull()) {
        return;
    }
    const QPoint centre = caret.center();
    ensureVisible(centre.x(), centre.y(), 0,
                  caret.height() / 2 + static_cast<int>(KRCheckListDefaults::caretRevealMargin()));
}

// Events of the host
// -------------------------------------------------------------------------------------------------------

bool KRCheckListWidget::eventFilter(QObject* watched, QEvent* event) {
    if (watched != m_hostWidget) {
        return QScrollArea::eventFilter(watched, event);
    }
    if (event->type() == QEvent::KeyPress && scrollByPageForKey(*static_cast<QKeyEvent*>(event))) {
        return true;
    }
    if (event->type() == QEvent::MouseMove) {
        // A drag runs from the press on a handle; its moves come to the host wherever the pointer is.
        const auto* move = static_cast<const QMouseEvent*>(event);
        if ((move->buttons() & Qt::LeftButton) && m_checkListView->isDragging()) {
            followDraggingPointer(move->globalPosition());
        }
    }
    return QScrollArea::eventFilter(watched, event);
}

// Page Up and Page Down scroll by a page whatever is edited or selected, and leave both as they are.
bool KRCheckListWidget::scrollByPageForKey(const QKeyEvent& event) {
    const bool pageUp = event.key() == Qt::Key_PageUp;
    if ((!pageUp && event.key() != Qt::Key_PageDown) ||
        (event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier))) {
        return false;
    }
    verticalScrollBar()->triggerAction(pageUp ? QAbstractSlider::SliderPageStepSub
                                              : QAbstractSlider::SliderPageStepAdd);
    return true;
}

// Auto-scroll
// -------------------------------------------------------------------------------------------------------

double KRCheckListWidget::autoScrollSpeedAtViewportY(double y) const {
    const double height = viewport()->height();
    // A viewport too low for two full zones shares it between them.
    const double zone = std::min(KRCheckListDefaults::autoScrollEdgeZoneHeight(), height / 2.0);
    if (zone <= 0.0) {
        return 0.0;
    }
    const double minimum = KRCheckListDefaults::autoScrollMinimumSpeed();
    const double maximum = KRCheckListDefaults::autoScrollMaximumSpeed();
    // 0 where the pointer enters a zone, 1 at the viewport's edge and beyond it.
    const auto speedAtDepth = [&](double depth) {
        return minimum + (maximum - minimum) * std::clamp(depth, 0.0, 1.0);
    };
    if (y < zone) {
        return -speedAtDepth((zone - y) / zone);
    }
    if (y > height - zone) {
        return speedAtDepth((y - (height - zone)) / zone);
    }
    return 0.0;
}

void KRCheckListWidget::followDraggingPointer(QPointF globalPosition) {
    m_draggingPointer = globalPosition;
    const double y = viewport()->mapFromGlobal(globalPosition).y();
    if (autoScrollSpeedAtViewportY(y) != 0.0 && !m_autoScrollScheduled) {
        m_lastAutoScrollTime = KRClock::now();
        m_autoScrollRemainder = 0.0;
        scheduleAutoScroll();
    }
}

void KRCheckListWidget::scheduleAutoScroll() {
    m_autoScrollScheduled = true;
    KRRunLoop::main().performAfterDelay(KRCheckListDefaults::autoScrollInterval(),
                                        [widget = QPointer<KRCheckListWidget>(this)] {
                                            if (widget) {
                                                widget->autoScroll();
                                            }
                                        });
}

// One step: scroll by the speed times the time since the last step, then hand the pointer to the host
// again, so that the dragged row stays under it in the list's coordinates.
void KRCheckListWidget::autoScroll() {
    m_autoScrollScheduled = false;
    if (!m_checkListView->isDragging()) {
        return;
    }
    const double y = viewport()->mapFromGlobal(m_draggingPointer).y();
    const double speed = autoScrollSpeedAtViewportY(y);
    if (speed == 0.0) {
        return;
    }
    const double now = KRClock::now();
    const double distance = speed * (now - m_lastAutoScrollTime) + m_autoScrollRemainder;
    m_lastAutoScrollTime = now;
    const double whole = std::trunc(distance);
    m_autoScrollRemainder = distance - whole;
    QScrollBar* scrollBar = verticalScrollBar();
    const int before = scrollBar->value();
    scrollBar->setValue(before + static_cast<int>(whole));
    // The next step first: the move below passes the event filter, which would otherwise start over.
    scheduleAutoScroll();
    if (scrollBar->value() != before) {
        const QPointF position = m_hostWidget->mapFromGlobal(m_draggingPointer);
        QMouseEvent move(QEvent::MouseMove, position, m_draggingPointer, Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QCoreApplication::sendEvent(m_hostWidget, &move);
    }
}

void KRCheckListWidget::settle() {
    for (int round = 0; round < kMaximumSettleRounds; ++round) {
        const QSize hostSize = m_hostWidget->size();
        const KRSize fitting = m_checkListView->lastSizeThatFits();
        QCoreApplication::processEvents();
        KRRunLoop::main().runUntilIdle();
        m_hostWidget->krWindow().updateIfNeeded();
        const bool unchanged =
            hostSize == m_hostWidget->size() && fitting == m_checkListView->lastSizeThatFits();
        if (unchanged && !m_heightUpdateScheduled) {
            return;
        }
    }
}
