#pragma once

// A list shown through a host widget, so that tests click with the mouse and press real keys: the Qt events
// go through the host's translation and the key bindings exactly as they do in an application.

#include "KRCheckListViewTestSupport.h"

#include "KRCheckListDefaults.h"

#include "Platform/KRHostWidget.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>

#include <memory>

namespace KRCheckListViewTesting {

class KRCheckListViewHostTestCase : public ::testing::Test {
protected:
    void SetUp() override {
        KRClock::useManualTime(0.0);
        KRRunLoop::main().cancelAll();
        KRTextView::installTextSystem();
        KREvent::setCurrentModifierFlags(0);
        host = std::make_unique<KRHostWidget>();
        host->resize(400, 800);
        host->setContentView(content);
        content->addSubview(list);
    }
    void TearDown() override {
        KRAssertionHandler::setCurrentHandler(nullptr);
        KREvent::setCurrentModifierFlags(0);
        window().makeFirstResponder(nullptr);
        KRClock::advance(1.0); // lets every animation a test started finish
        KRRunLoop::main().cancelAll();
        host.reset();
    }

    KRWindow& window() { return host->krWindow(); }

    // Connects the recording clients, gives the data source items with these identifiers and reloads; the
    // log starts empty afterwards.
    void showItems(const QStringList& identifiers) {
        dataSource->items = itemsWithIdentifiers(identifiers);
        showItems();
    }
    // The same with the items the data source already holds.
    void showItems() {
        list->setDataSource(dataSource);
        list->setDelegate(delegate);
        list->reloadItems();
        settle();
        log->clear();
    }
    // Gives the data source these titles (identifiers "a", "b", … in order) and shows them.
    void showTitles(const QStringList& titles) {
        dataSource->items.clear();
        for (int index = 0; index < titles.size(); ++index) {
            dataSource->items.push_back(Item{QString(QChar('a' + index)), 0, titles.at(index)});
        }
        showItems();
    }

    // Delivers what was deferred to the next turn of the run loop and runs the window's layout pass.
    void settle() {
        KRRunLoop::main().runUntilIdle();
        window().updateIfNeeded();
    }

    // Mouse (points in the list's coordinates) -------------------------------------------------------------

    QPointF hostPoint(KRPoint pointInList) const {
        const KRPoint inWindow = list->convertPointToView(pointInList, nullptr);
        return QPointF(inWindow.x, inWindow.y);
    }
    // Presses far apart in time, so that consecutive clicks never count as a double click unless asked.
    void press(KRPoint pointInList, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        m_timestamp += 10000;
        sendMouse(QEvent::MouseButtonPress, pointInList, Qt::LeftButton, Qt::LeftButton, modifiers);
    }
    // A press that follows the previous one at once, at the same place: the host counts one more click.
    void pressAgain(KRPoint pointInList, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        m_timestamp += 10;
        sendMouse(QEvent::MouseButtonPress, pointInList, Qt::LeftButton, Qt::LeftButton, modifiers);
    }
    void dragTo(KRPoint pointInList, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        m_timestamp += 10;
        sendMouse(QEvent::MouseMove, pointInList, Qt::NoButton, Qt::LeftButton, modifiers);
    }
    void release(KRPoint pointInList, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        m_timestamp += 10;
        sendMouse(QEvent::MouseButtonRelease, pointInList, Qt::LeftButton, Qt::NoButton, modifiers);
    }
    void moveTo(KRPoint pointInList, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        m_timestamp += 10;
        sendMouse(QEvent::MouseMove, pointInList, Qt::NoButton, Qt::NoButton, modifiers);
    }
    // Press and release at one point; the deferred messages are delivered and the window laid out.
    void click(KRPoint pointInList, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        press(pointInList, modifiers);
        release(pointInList, modifiers);
        settle();
    }
    // A point inside the title of the row at index: x from the title's left edge, in its first line.
    KRPoint pointInTitleOfRow(KRUInteger index, double x) const {
        const KRCheckListItemTitleTextField* field = list->checkListViewTitleTextFieldForIndex(index);
        const KRRect frame = field->convertRectToView(field->bounds(), list.get());
        return KRPointMake(frame.origin.x + x, frame.origin.y + 0.5 * KRCheckListDefaults::lineHeight());
    }

    // Keys
    // ---------------------------------------------------------------------------------------------------

    // Presses and releases a key; text is what the key types (empty for keys that type nothing).
    void pressKey(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
                  const QString& text = QString()) {
        sendKey(QEvent::KeyPress, key, modifiers, text);
        sendKey(QEvent::KeyRelease, key, modifiers, text);
        settle();
    }
    // Types each character as its own key.
    void typeText(const QString& text) {
        for (const QChar character : text) {
            const int key = character.isLetter() ? Qt::Key_A + (character.toUpper().unicode() - 'A')
                                                 : static_cast<int>(character.unicode());
            const Qt::KeyboardModifiers modifiers =
                character.isUpper() ? Qt::KeyboardModifiers(Qt::ShiftModifier) : Qt::NoModifier;
            sendKey(QEvent::KeyPress, key, modifiers, QString(character));
            sendKey(QEvent::KeyRelease, key, modifiers, QString(character));
        }
        settle();
    }

    // What the edited title's editor holds, or "not edited".
    QString editedText() const {
        if (list->indexForEditedItem() == KRNotFound) {
            return QStringLiteral("not edited");
        }
        KRTextView* editor =
            list->checkListViewTitleTextFieldForIndex(list->indexForEditedItem())->currentEditor();
        return editor ? editor->string() : QStringLiteral("not edited");
    }
    // The selection in the edited title's editor, or KRNotFound-located when nothing is edited.
    KRRange editedSelection() const {
        if (list->indexForEditedItem() == KRNotFound) {
            return KRRange{KRNotFound, 0};
        }
        KRTextView* editor =
            list->checkListViewTitleTextFieldForIndex(list->indexForEditedItem())->currentEditor();
        return editor ? editor->selectedRange() : KRRange{KRNotFound, 0};
    }
    // The titles the data source holds, top to bottom.
    QStringList storedTitles() const {
        QStringList titles;
        for (const Item& item : dataSource->items) {
            titles << item.title;
        }
        return titles;
    }
    // The titles the rows show, top to bottom.
    QStringList rowTitles() const {
        QStringList titles;
        for (const std::shared_ptr<KRCheckListItemView>& row : list->checkListItemViews()) {
            titles << row->title();
        }
        return titles;
    }
    KRCheckListItemView* rowAt(KRUInteger index) const { return list->checkListItemViews().at(index).get(); }

    std::unique_ptr<KRHostWidget> host;
    std::shared_ptr<KRView> content = std::make_shared<KRView>(KRRectMake(0, 0, 400, 800));
    std::shared_ptr<KRCheckListView> list = std::make_shared<KRCheckListView>(KRRectMake(0, 0, 320, 600));
    std::shared_ptr<MessageLog> log = std::make_shared<MessageLog>();
    std::shared_ptr<RecordingDataSource> dataSource = std::make_shared<RecordingDataSource>(log);
    std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>(log);

private:
    void sendMouse(QEvent::Type type, KRPoint pointInList, Qt::MouseButton button, Qt::MouseButtons buttons,
                   Qt::KeyboardModifiers modifiers) {
        const QPointF position = hostPoint(pointInList);
        QMouseEvent event(type, position, host->mapToGlobal(position), button, buttons, modifiers);
        event.setTimestamp(m_timestamp);
        QCoreApplication::sendEvent(host.get(), &event);
    }
    void sendKey(QEvent::Type type, int key, Qt::KeyboardModifiers modifiers, const QString& text) {
        QKeyEvent event(type, key, modifiers, text);
        QCoreApplication::sendEvent(host.get(), &event);
    }

    quint64 m_timestamp = 0;
};

} // namespace KRCheckListViewTesting
