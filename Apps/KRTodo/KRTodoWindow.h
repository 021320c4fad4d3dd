#pragma once

#include <QImage>
#include <QMainWindow>

#include <memory>

class KRCheckListView;
class KRHostWidget;
class KRTodoStore;
class QScrollArea;

// KRTodo's main window: the store's checklist in a scroll area. The list is as wide as the scroll area's
// viewport and as tall as its rows; it scrolls when it is taller than the window.
class KRTodoWindow : public QMainWindow {
public:
    explicit KRTodoWindow(std::shared_ptr<KRTodoStore> store, QWidget* parent = nullptr);
    ~KRTodoWindow() override;

    KRTodoStore& store() const { return *m_store; }
    KRCheckListView& checkListView() const { return *m_checkListView; }
    KRHostWidget& hostWidget() const { return *m_hostWidget; }
    QScrollArea& scrollArea() const { return *m_scrollArea; }

    // Runs Qt's events and the toolkit's deferred work until the list's size has followed the window.
    void settle();
    // The whole list, also what lies outside the viewport, drawn at the given device pixel ratio.
    QImage renderCheckListToImage(double devicePixelRatio);

private:
    void setUpCheckListView();
    void setUpScrollArea();
    void scheduleHeightUpdate();
    void updateHeight();

    std::shared_ptr<KRTodoStore> m_store;
    std::shared_ptr<KRCheckListView> m_checkListView;
    KRHostWidget* m_hostWidget = nullptr;
    QScrollArea* m_scrollArea = nullptr;
    bool m_heightUpdateScheduled = false;
};
