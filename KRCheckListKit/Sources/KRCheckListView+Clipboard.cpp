// KRCheckListView: the clipboard. Copied items travel in two forms at once, JSON records that keep each
// item's status (KRCheckListItemsAsJSONPasteboardType) and plain text for other applications; paste
// prefers the records and inserts the items after the selection or the edited item.
#include "KRCheckListView.h"
#include "KRCheckListViewAssert.h"

#include "Foundation/KRRunLoop.h"
#include "Geometry/KRGeometry.h"
#include "Platform/KRPasteboard.h"
#include "Text/KRTextView.h"

#include <QJsonDocument>
#include <QJsonParseError>

#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace {

constexpr KRUInteger KRCheckListStatusOpen = 0;
constexpr KRUInteger KRCheckListStatusCompleted = 1;

// The keys of an item record.
const QString& identifierKey() {
    static const QString key = QStringLiteral("identifier");
    return key;
}
const QString& statusKey() {
    static const QString key = QStringLiteral("status");
    return key;
}
const QString& titleKey() {
    static const QString key = QStringLiteral("title");
    return key;
}
const QString& frameKey() {
    static const QString key = QStringLiteral("frame");
    return key;
}
const QString& indexKey() {
    static const QString key = QStringLiteral("index");
    return key;
}

// The plain-text form: one line per item, a status marker, a space, the title.
constexpr QChar KRCheckListOpenMarker = u'-';
constexpr QChar KRCheckListCompletedMarker = u'+';
constexpr QChar KRCheckListMarkerSeparator = u' ';
constexpr QChar KRCheckListLineSeparator = u'\n';
// A status that does not fit a JSON integer exactly is not a status paste takes.
constexpr qint64 KRCheckListNoStatus = -1;

// Spaces and tabs, the set each line is trimmed of (Unicode space separators and the tab).
bool isSpaceOrTab(QChar character) {
    return character == u'\t' || character.category() == QChar::Separator_Space;
}

QString trimmingSpacesAndTabs(const QString& string) {
    qsizetype start = 0;
    qsizetype end = string.size();
    while (start < end && isSpaceOrTab(string.at(start))) {
        ++start;
    }
    while (end > start && isSpaceOrTab(string.at(end - 1))) {
        --end;
    }
    return string.mid(start, end - start);
}

// A status as JSON writes it: an integer while it fits one exactly.
QJsonValue jsonStatus(KRUInteger status) {
    if (status <= static_cast<KRUInteger>(std::numeric_limits<qint64>::max())) {
        return QJsonValue(static_cast<qint64>(status));
    }
    return QJsonValue(static_cast<double>(status));
}

// A record's status when it is a non-negative integer, else KRCheckListNoStatus.
qint64 statusOfJSONValue(const QJsonValue& value) {
    if (!value.isDouble()) {
        return KRCheckListNoStatus;
    }
    const qint64 status = value.toInteger(KRCheckListNoStatus);
    return status < 0 ? KRCheckListNoStatus : status;
}

// Compact JSON written straight into bytes, as QJsonDocument would write the same records but without
// building a document of every copied item first: strings escaped as JSON asks, text kept as UTF-8.
void appendJSONString(QByteArray& json, const QString& string) {
    static const char hexDigits[] = "0123456789abcdef";
    json += '"';
    const QByteArray utf8 = string.toUtf8();
    const char* bytes = utf8.constData();
    const qsizetype length = utf8.size();
    // Runs of bytes that need no escape go in whole.
    qsizetype runStart = 0;
    for (qsizetype index = 0; index < length; ++index) {
        const unsigned char byte = static_cast<unsigned char>(bytes[index]);
        if (byte >= 0x20 && byte != '"' && byte != '\\') {
            continue;
        }
        json.append(bytes + runStart, index - runStart);
        runStart = index + 1;
        switch (byte) {
        case '"':
            json += "\\\"";
            break;
        case '\\':
            json += "\\\\";
            break;
        case '\b':
            json += "\\b";
            break;
        case '\f':
            json += "\\f";
            break;
        case '\n':
            json += "\\n";
            break;
        case '\r':
            json += "\\r";
            break;
        case '\t':
            json += "\\t";
            break;
        default:
            json += "\\u00";
            json += hexDigits[byte >> 4];
            json += hexDigits[byte & 0xf];
        }
    }
    json.append(bytes + runStart, length - runStart);
    json += '"';
}

// Any other JSON value (identifiers are strings in practice) as the document writer writes it.
void appendJSONValue(QByteArray& json, const QJsonValue& value) {
    if (value.isString()) {
        appendJSONString(json, value.toString());
        return;
    }
    const QByteArray array = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    json += QByteArrayView(array).sliced(1, array.size() - 2);
}

// The indexes of indexes that name an item: a selection may still hold indexes of items a client removed.
KRIndexSet indexesOfItems(const KRIndexSet& indexes, KRUInteger numberOfItems) {
    return indexes.indexSetByIntersectingIndexes(KRIndexSet(KRRange{0, numberOfItems}));
}

} // namespace

// Representations
// ------------------------------------------------------------------------------------------------------

// The keys in the order a JSON object keeps them, so the bytes are the ones QJsonDocument would write.
QByteArray KRCheckListView::checkListViewJSONRepresentationOfItemsAtIndexes(const KRIndexSet& indexes) const {
    // About what a one-line item takes, so that the bytes are seldom moved while they grow.
    constexpr qsizetype typicalRecordSize = 128;
    QByteArray json;
    json.reserve(static_cast<qsizetype>(indexes.count()) * typicalRecordSize);
    json += '[';
    bool first = true;
    for (const KRUInteger index : indexesOfItems(indexes, numberOfItems())) {
        const KRCheckListItemView* itemView = checkListViewItemViewForItemAtIndex(index);
        const QJsonValue identifier = itemView->itemIdentifier();
        json += first ? "{" : ",{";
        first = false;
        appendJSONString(json, frameKey());
        json += ':';
        appendJSONString(json, KRStringFromRect(itemView->frame()));
        json += ',';
        appendJSONString(json, identifierKey());
        json += ':';
        // A row without an identifier still gets the key, as null.
        appendJSONValue(json, identifier.isUndefined() ? QJsonValue(QJsonValue::Null) : identifier);
        json += ',';
        appendJSONString(json, indexKey());
        json += ':';
        json += QByteArray::number(static_cast<qint64>(index));
        json += ',';
        appendJSONString(json, statusKey());
        json += ':';
        const QJsonValue status = jsonStatus(itemView->status());
        if (status.isDouble() && status.toInteger(KRCheckListNoStatus) >= 0) {
            json += QByteArray::number(status.toInteger());
        } else {
            appendJSONValue(json, status);
        }
        json += ',';
        appendJSONString(json, titleKey());
        json += ':';
        appendJSONString(json, itemView->title());
        json += '}';
    }
    json += ']';
    return json;
}

QString KRCheckListView::checkListViewStringRepresentationOfItemsAtIndexes(const KRIndexSet& indexes) const {
    // About what a one-line item takes.
    constexpr qsizetype typicalLineLength = 40;
    QString string;
    string.reserve(static_cast<qsizetype>(indexes.count()) * typicalLineLength);
    for (const KRUInteger index : indexesOfItems(indexes, numberOfItems())) {
        const KRCheckListItemView* itemView = checkListViewItemViewForItemAtIndex(index);
        // Canceled items are marked as completed ones: the text has one marker for both.
        string +=
            itemView->status() == KRCheckListStatusOpen ? KRCheckListOpenMarker : KRCheckListCompletedMarker;
        string += KRCheckListMarkerSeparator;
        string += itemView->title();
        string += KRCheckListLineSeparator;
    }
    return string;
}

// Only the line feed separates lines: a carriage return is not trimmed from a line, so text with CR LF line
// ends keeps it at the end of every title but the last. Empty lines become items with empty titles.
QJsonArray KRCheckListView::checkListViewItemsAsJSONByParsingItemsAsString(const QString& string) {
    QJsonArray records;
    // QString's white space is exactly Unicode's separators, tab, line and paragraph ends and U+0085:
    // white space and newlines.
    const QStringList lines = string.trimmed().split(KRCheckListLineSeparator);
    for (const QString& line : lines) {
        QString title = trimmingSpacesAndTabs(line);
        KRUInteger status = KRCheckListStatusOpen;
        if (title.startsWith(KRCheckListOpenMarker) || title.startsWith(KRCheckListCompletedMarker)) {
            status = title.startsWith(KRCheckListCompletedMarker) ? KRCheckListStatusCompleted
                                                                  : KRCheckListStatusOpen;
            title = trimmingSpacesAndTabs(title.mid(1));
        }
        QJsonObject record;
        record.insert(statusKey(), static_cast<qint64>(status));
        record.insert(titleKey(), title);
        records.append(record);
    }
    return records;
}

// Anything but an array of objects, a title that is not a string or a status that is not a non-negative
// integer rejects the whole data; absent keys are an empty title and status 0.
std::optional<QJsonArray> KRCheckListView::checkListViewItemsAsJSONByReadingData(const QByteArray& data) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(data, &error);
    if (error.error != QJsonParseError::NoError || !document.isArray()) {
        return std::nullopt;
    }
    const QJsonArray array = document.array();
    QJsonArray records;
    for (const QJsonValue& value : array) {
        if (!value.isObject()) {
            return std::nullopt;
        }
        const QJsonObject object = value.toObject();
        const QJsonValue title = object.value(titleKey());
        const QJsonValue status = object.value(statusKey());
        if (!title.isUndefined() && !title.isString()) {
            return std::nullopt;
        }
        qint64 statusValue = static_cast<qint64>(KRCheckListStatusOpen);
        if (!status.isUndefined()) {
            statusValue = statusOfJSONValue(status);
            if (statusValue == KRCheckListNoStatus) {
                return std::nullopt;
            }
        }
        QJsonObject record;
        record.insert(statusKey(), statusValue);
        record.insert(titleKey(), title.toString());
        records.append(record);
    }
    return records;
}

void KRCheckListView::checkListViewInitCheckListItemViewWithJSON(KRCheckListItemView* itemView,
                                                                 const QJsonObject& record) const {
    KR_CHECKLIST_VIEW_ASSERT(itemView, "checkListViewInitCheckListItemView:withJSON:",
                             "Can't init check list item view, check list item view is nil");
    if (!itemView) {
        return;
    }
    const QString title = record.value(titleKey()).toString();
    const QJsonValue identifier = record.value(identifierKey());
    const qint64 status = statusOfJSONValue(record.value(statusKey()));
    const KRRect frame = KRRectFromString(record.value(frameKey()).toString());
    itemView->update([&] {
        itemView->setTitle(title);
        itemView->setItemIdentifier(identifier);
        itemView->setStatus(status == KRCheckListNoStatus ? KRCheckListStatusOpen
                                                          : static_cast<KRUInteger>(status));
        itemView->setFrame(frame);
    });
}

// Copy, cut and paste
// ------------------------------------------------------------------------------------------------------

// Only the selection is copied: with an item merely edited the pasteboard gets an empty list.
void KRCheckListView::copy() {
    const KRIndexSet indexes = indexesOfItems(m_indexesForSelectedItems, numberOfItems());
    const QString string = checkListViewStringRepresentationOfItemsAtIndexes(indexes);
    const QByteArray data = checkListViewJSONRepresentationOfItemsAtIndexes(indexes);
    const std::shared_ptr<KRPasteboard> pasteboard = KRPasteboard::generalPasteboard();
    pasteboard->declareTypes({KRCheckListItemsAsJSONPasteboardType, KRPasteboardTypeString}, this);
    pasteboard->setData(data, KRCheckListItemsAsJSONPasteboardType);
    pasteboard->setString(string, KRPasteboardTypeString);
}

void KRCheckListView::cut() {
    copy();
    delete_();
}

void KRCheckListView::paste() {
    const std::shared_ptr<KRPasteboard> pasteboard = KRPasteboard::generalPasteboard();

    // The records, or else the text; records that cannot be read are passed over silently.
    std::optional<QJsonArray> records;
    if (const std::optional<QByteArray> data =
            pasteboard->dataForType(KRCheckListItemsAsJSONPasteboardType)) {
        records = checkListViewItemsAsJSONByReadingData(*data);
    }
    if (!records) {
        const std::optional<QString> text = pasteboard->stringForType(KRPasteboardTypeString);
        KR_CHECKLIST_VIEW_ASSERT(
            text.has_value(),
            "paste:", "[ERROR] Can't paste check list items, no check list items found on pastebaord");
        if (!text) {
            return;
        }
        // One line pasted into a title is typing.
        if (m_indexForEditedItem != KRNotFound && !text->contains(KRCheckListLineSeparator)) {
            if (m_indexForEditedItem < numberOfItems()) {
                if (KRTextView* editor =
                        checkListViewTitleTextFieldForIndex(m_indexForEditedItem)->currentEditor()) {
                    editor->insertTextReplacementRange(*text, editor->selectedRange());
                }
            }
            return;
        }
        records = checkListViewItemsAsJSONByParsingItemsAsString(*text);
    }
    if (records->isEmpty()) {
        return;
    }

    // The items go after the selection, else after the edited item (which they replace when its title is
    // empty), else at the end.
    const KRUInteger count = numberOfItems();
    KRIndexSet indexesToRemove = indexesOfItems(m_indexesForSelectedItems, count);
    KRUInteger index = count;
    const KRUInteger editedIndex = m_indexForEditedItem;
    if (editedIndex != KRNotFound && editedIndex < count) {
        if (checkListViewItemViewForItemAtIndex(editedIndex)->title().isEmpty()) {
            indexesToRemove = indexesToRemove.indexSetByAddingIndex(editedIndex);
        }
        index = editedIndex + 1;
        endEditing();
    }
    if (!indexesToRemove.isEmpty()) {
        index = indexesToRemove.lastIndex() + 1;
    }

    checkListViewBeginGrouping(this);
    std::weak_ptr<KRCheckListItemView> lastPastedItemView;
    for (const QJsonValue& value : std::as_const(*records)) {
        const QJsonObject record = value.toObject();
        const KRUInteger countBeforeInserting = numberOfItems();
        insertItemAtIndex(index);
        const QString title = record.value(titleKey()).toString();
        const auto status = static_cast<KRUInteger>(record.value(statusKey()).toInteger());
        const QString validatedTitle = checkListViewValidateChangedTitleForItemAtIndex(this, title, index);
        const KRUInteger validatedStatus =
            checkListViewValidateChangedStatusForItemAtIndex(this, status, index);
        // A data source that has not reported the new item yet has no row for it; another item's row is
        // left alone.
        if (numberOfItems() > countBeforeInserting && index < numberOfItems()) {
            const std::shared_ptr<KRCheckListItemView> itemView = m_checkListItemViews[index];
            itemView->update([&] {
                itemView->setTitle(validatedTitle);
                itemView->setStatus(validatedStatus);
            });
            lastPastedItemView = itemView;
        }
        // Deliberate, for a row never edited: it is how the host hears of the row's new title and status.
        checkListViewWillEndEditingItemAtIndex(this, index);
        ++index;
    }
    // Every index to remove lies before the pasted block, which moves up as one.
    removeItemsAtIndexes(indexesToRemove);
    // A data source that did not set the selection again leaves its numbers; none may point past the rows
    // until the edit of the next turn deselects them.
    const KRUInteger lastSelected = m_indexesForSelectedItems.lastIndex();
    if (lastSelected != KRNotFound && lastSelected >= numberOfItems()) {
        deselectAllItems();
    }
    checkListViewEndGrouping(this);
    layoutSubviews();

    // Editing the last pasted item waits for the next turn, when the host has settled its changes.
    const KRWeak<KRCheckListView> weakSelf(this);
    KRRunLoop::main().performAfterDelay(0.0, [weakSelf, lastPastedItemView] {
        KRCheckListView* checkListView = weakSelf.get();
        if (!checkListView) {
            return;
        }
        if (const std::shared_ptr<KRCheckListItemView> itemView = lastPastedItemView.lock()) {
            checkListView->checkListViewBeginEditingCheckListItemView(itemView.get());
        } else {
            // The row is gone already: the last item is edited, as for a row that is no longer in the list.
            checkListView->beginEditing();
        }
    });
}
