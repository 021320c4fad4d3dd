#pragma once

#include "Foundation/KRTypes.h"

#include <QPointF>
#include <QRect>
#include <QScrollArea>

#include <memory>

class KRCheckListView;
class KRHostWidget;

// A check list ready to put in a Qt window: a scroll area holding a host widget whose content is the list.
// The list is as wide as the viewport and as tall as its rows; after every pass of the list the host takes
// the list's fitting size and the caret, when it moved, is scrolled into view. The wheel and the page keys
// scroll (Page Up and Page Down leave editing and the selection as they are), and while a row is dragged
// near the viewport's top or bottom edge the view scrolls by itself, faster the deeper the pointer is in the
// edge zone, with the row following the pointer. Focus given to the widget goes to the host. Everything
// else — data source, delegate, commands — is the list's: checkListView().
class KRCheckListWidget : public QScrollArea {
public:
    explicit KRCheckListWidget(QWidget* parent = nullptr);
    ~KRCheckListWidget() override;

    KRCheckListView& checkListView() const { return *m_checkListView; }
    const std::shared_ptr<KRCheckListView>& sharedCheckListView() const { return m_checkListView; }
    KRHostWidget& hostWidget() const { return *m_hostWidget; }

    // The caret of the edited title in the host widget's coordinates; null when nothing is edited.
    QRect caretRectInHostWidget() const;
    // Scrolls the caret into view on the next turn, once the list and the host have followed the change.
    void scheduleCaretReveal();
    bool isCaretRevealScheduled() const { return m_caretRevealScheduled; }
    // The speed at which the viewport scrolls by itself (points per second, negative upward) while a row is
    // dragged with the pointer at y in the viewport's coordinates.
    double autoScrollSpeedAtViewportY(double y) const;
    bool isAutoScrollScheduled() const { return m_autoScrollScheduled; }
    // Runs Qt's events and the toolkit's deferred work until the host has followed the list's size.
    void settle();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void listDidUpdate();
    void scheduleHeightUpdate();
    void updateHeight();
    void revealCaret();
    bool scrollByPageForKey(const QKeyEvent& event);
    void followDraggingPointer(QPointF globalPosition);
    void scheduleAutoScroll();
    void autoScroll();

    std::shared_ptr<KRCheckListView> m_checkListView;
    KRHostWidget* m_hostWidget = nullptr;
    QRect m_lastCaretRect;
    bool m_heightUpdateScheduled = false;
    bool m_caretRevealScheduled = false;
    bool m_autoScrollScheduled = false;
    QPointF m_draggingPointer;
    double m_lastAutoScrollTime = 0.0;
    double m_autoScrollRemainder = 0.0;
};
