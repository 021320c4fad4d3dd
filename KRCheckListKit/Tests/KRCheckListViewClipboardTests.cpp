// The clipboard of the list: the JSON and plain-text forms of items, the parsing of text into items,
// loading a row from a record, and copy, cut and paste with the messages they send, in order.
#include "KRCheckListView.h"

#include "KRCheckListViewTestSupport.h"

#include "Foundation/KRAssertionHandler.h"
#include "Foundation/KRLog.h"
#include "Foundation/KRRunLoop.h"
#include "Geometry/KRGeometry.h"
#include "Platform/KRPasteboard.h"
#include "Text/KRTextView.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMimeData>

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace KRCheckListViewTesting;

namespace {

// Records every failed assertion and lets the program go on, as with assertions disabled.
class RecordingAssertionHandler : public KRAssertionHandler {
public:
    void handleFailureInMethod(const QString& method, const KRObject*, const QString& file, int,
                               const QString& message) override {
        failures << method + QStringLiteral(" ") + file + QStringLiteral(": ") + message;
    }
    QStringList failures;
};

// A record as the parser makes it, for comparisons that print readably.
struct Record {
    QString title;
    KRUInteger status = 0;
    friend bool operator==(const Record&, const Record&) = default;
};
void PrintTo(const Record& record, std::ostream* os) {
    *os << "{" << record.status << ", \"" << record.title.toStdString() << "\"}";
}

std::vector<Record> recordsOf(const QJsonArray& array) {
    std::vector<Record> records;
    for (const QJsonValue& value : array) {
        const QJsonObject object = value.toObject();
        records.push_back(
            Record{object.value(QStringLiteral("title")).toString(),
                   static_cast<KRUInteger>(object.value(QStringLiteral("status")).toInteger())});
    }
    return records;
}

std::vector<Record> parsed(const QString& text) {
    return recordsOf(KRCheckListView::checkListViewItemsAsJSONByParsingItemsAsString(text));
}

// The records paste takes from data, or nothing when it passes the data over for the text.
std::optional<std::vector<Record>> read(const QByteArray& data) {
    const std::optional<QJsonArray> records = KRCheckListView::checkListViewItemsAsJSONByReadingData(data);
    if (!records) {
        return std::nullopt;
    }
    return recordsOf(*records);
}

class KRCheckListViewClipboardTests : public KRCheckListViewTestCase {
protected:
    void SetUp() override {
        KRCheckListViewTestCase::SetUp();
        KRPasteboard::setGeneralPasteboard(pasteboard);
    }
    void TearDown() override {
        KRPasteboard::setGeneralPasteboard(nullptr);
        KRCheckListViewTestCase::TearDown();
    }

    // Shows items "i0", "i1", … with these titles and statuses through the data source that groups; the log
    // starts empty afterwards.
    void showTitles(const QStringList& titles, const std::vector<KRUInteger>& statuses = {}) {
        std::vector<Item> items;
        for (qsizetype index = 0; index < titles.size(); ++index) {
            const KRUInteger status = static_cast<std::size_t>(index) < statuses.size() ? statuses[index] : 0;
            items.push_back(Item{QStringLiteral("i%1").arg(index), status, titles.at(index)});
        }
        showItemsFrom(groupingDataSource, {});
        groupingDataSource->items = items;
        list->reloadItems();
        list->layoutIfNeeded();
        log->clear();
    }
    // Shows n items "Item 0", "Item 1", ….
    void showNumberedItems(int count) {
        QStringList titles;
        for (int index = 0; index < count; ++index) {
            titles << QStringLiteral("Item %1").arg(index);
        }
        showTitles(titles);
    }
    // Gives the list the focus and selects these items; the log starts empty afterwards.
    void selectItems(const KRIndexSet& indexes) {
        window.makeFirstResponder(list.get());
        KRRunLoop::main().runUntilIdle();
        list->selectItemsAtIndexesByExtendingSelection(indexes, false);
        KRRunLoop::main().runUntilIdle();
        log->clear();
    }
    // Gives the list the focus with nothing edited and nothing selected.
    void focusWithoutEditing() {
        window.makeFirstResponder(list.get());
        KRRunLoop::main().runUntilIdle();
        list->endEditing();
        KRRunLoop::main().runUntilIdle();
        log->clear();
    }

    void putText(const QString& text) {
        pasteboard->declareTypes({KRPasteboardTypeString}, nullptr);
        pasteboard->setString(text, KRPasteboardTypeString);
    }
    // Puts data under the private type, and text too when there is some.
    void putData(const QByteArray& data, const std::optional<QString>& text = std::nullopt) {
        if (text) {
            pasteboard->declareTypes({KRCheckListItemsAsJSONPasteboardType, KRPasteboardTypeString}, nullptr);
            pasteboard->setString(*text, KRPasteboardTypeString);
        } else {
            pasteboard->declareTypes({KRCheckListItemsAsJSONPasteboardType}, nullptr);
        }
        pasteboard->setData(data, KRCheckListItemsAsJSONPasteboardType);
    }

    QStringList rowTitles() const {
        QStringList titles;
        for (const std::shared_ptr<KRCheckListItemView>& row : list->checkListItemViews()) {
            titles << row->title();
        }
        return titles;
    }
    std::vector<KRUInteger> rowStatuses() const {
        std::vector<KRUInteger> statuses;
        for (const std::shared_ptr<KRCheckListItemView>& row : list->checkListItemViews()) {
            statuses.push_back(row->status());
        }
        return statuses;
    }
    QStringList storedTitles() const {
        QStringList titles;
        for (const Item& item : groupingDataSource->items) {
            titles << item.title;
        }
        return titles;
    }
    std::vector<KRUInteger> storedStatuses() const {
        std::vector<KRUInteger> statuses;
        for (const Item& item : groupingDataSource->items) {
            statuses.push_back(item.status);
        }
        return statuses;
    }
    KRIndexSet allIndexes() const { return KRIndexSet(KRRange{0, list->numberOfItems()}); }
    // Whether every selected index names an item.
    bool selectionIsWithinTheItems() const {
        const KRUInteger last = list->indexesForSelectedItems().lastIndex();
        return last == KRNotFound || last < list->numberOfItems();
    }

    // The recording delegate implements the deprecated animated messages too.
    KRLogCapture deprecationWarnings;
    std::shared_ptr<KRPasteboard> pasteboard = KRPasteboard::makeInMemory();
    std::shared_ptr<FullRecordingDataSource> groupingDataSource =
        std::make_shared<FullRecordingDataSource>(log);
};

} // namespace

// The plain-text form and its parser
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewClipboardTests, TheEmptyIndexSetGivesTheEmptyStringAndAnEmptyJSONArray) {
    showTitles({"Milk", "Eggs"});
    EXPECT_EQ(list->checkListViewStringRepresentationOfItemsAtIndexes(KRIndexSet()), QString());
    EXPECT_EQ(list->checkListViewJSONRepresentationOfItemsAtIndexes(KRIndexSet()), QByteArray("[]"));
}

TEST_F(KRCheckListViewClipboardTests, TheTextFormMarksOpenItemsWithMinusAndEveryOtherStatusWithPlus) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"}, {0, 1, 2, 7});
    EXPECT_EQ(list->checkListViewStringRepresentationOfItemsAtIndexes(allIndexes()),
              QStringLiteral("- Milk\n+ Eggs\n+ Bread\n+ Jam\n"));
    EXPECT_EQ(list->checkListViewStringRepresentationOfItemsAtIndexes(KRIndexSet{3, 0}),
              QStringLiteral("- Milk\n+ Jam\n"))
        << "ascending, every line ends in a line feed";
}

TEST_F(KRCheckListViewClipboardTests, AnEmptyTitleIsAMarkerAndASpace) {
    showTitles({""});
    EXPECT_EQ(list->checkListViewStringRepresentationOfItemsAtIndexes(KRIndexSet{0}), QStringLiteral("- \n"));
}

TEST_F(KRCheckListViewClipboardTests, TheWritersReadTheRowsNotTheDataSource) {
    showTitles({"Milk"});
    groupingDataSource->items[0].title = QStringLiteral("changed behind the list's back");
    EXPECT_EQ(list->checkListViewStringRepresentationOfItemsAtIndexes(KRIndexSet{0}),
              QStringLiteral("- Milk\n"));
    EXPECT_TRUE(log->messages().isEmpty()) << "no client is asked";
}

TEST_F(KRCheckListViewClipboardTests, ATitleWithALineFeedIsWrittenOnSeveralLinesAndReadsBackAsSeveralItems) {
    showTitles({QStringLiteral("Milk\nEggs")}, {1});
    const QString text = list->checkListViewStringRepresentationOfItemsAtIndexes(KRIndexSet{0});
    EXPECT_EQ(text, QStringLiteral("+ Milk\nEggs\n"));
    EXPECT_EQ(parsed(text), (std::vector<Record>{{"Milk", 1}, {"Eggs", 0}}));
}

TEST_F(KRCheckListViewClipboardTests, AMarkedLineIsTrimmedAroundItsMarkerAndTitle) {
    EXPECT_EQ(parsed(QStringLiteral("  +  Buy milk  ")), (std::vector<Record>{{"Buy milk", 1}}));
}

TEST_F(KRCheckListViewClipboardTests, ALoneMinusReadsBackAsAnEmptyOpenItem) {
    EXPECT_EQ(parsed(QStringLiteral("-")), (std::vector<Record>{{"", 0}}));
}

TEST_F(KRCheckListViewClipboardTests, ALonePlusReadsBackAsAnEmptyCompletedItem) {
    EXPECT_EQ(parsed(QStringLiteral("+")), (std::vector<Record>{{"", 1}}));
    EXPECT_EQ(parsed(QStringLiteral("a\n+\t\n-\nb")),
              (std::vector<Record>{{"a", 0}, {"", 1}, {"", 0}, {"b", 0}}));
}

TEST_F(KRCheckListViewClipboardTests, TextOfBlankLinesAndSpacesOnlyGivesOneEmptyItem) {
    EXPECT_EQ(parsed(QStringLiteral("\n  \n\t \n\n   ")), (std::vector<Record>{{"", 0}}));
    EXPECT_EQ(parsed(QString()), (std::vector<Record>{{"", 0}}));
}

TEST_F(KRCheckListViewClipboardTests, EmptyLinesInsideTheTextBecomeEmptyOpenItems) {
    EXPECT_EQ(parsed(QStringLiteral("\n\nMilk\n\n  \n+ Eggs\n\n")),
              (std::vector<Record>{{"Milk", 0}, {"", 0}, {"", 0}, {"Eggs", 1}}));
}

TEST_F(KRCheckListViewClipboardTests, OnlyOneMarkerIsDropped) {
    EXPECT_EQ(parsed(QStringLiteral("- - Milk\n+ + Eggs\n--x\n+-y\n-+z")),
              (std::vector<Record>{{"- Milk", 0}, {"+ Eggs", 1}, {"-x", 0}, {"-y", 1}, {"+z", 0}}));
}

TEST_F(KRCheckListViewClipboardTests, OtherMarkersArePartOfTheTitle) {
    EXPECT_EQ(parsed(QStringLiteral("* Milk\n[x] Eggs\n1. Bread\n\u2022 Jam\n\u2013 Tea")),
              (std::vector<Record>{{"* Milk", 0},
                                   {"[x] Eggs", 0},
                                   {"1. Bread", 0},
                                   {QStringLiteral("\u2022 Jam"), 0},
                                   {QStringLiteral("\u2013 Tea"), 0}}));
}

TEST_F(KRCheckListViewClipboardTests, ACarriageReturnStaysInEveryTitleButTheLast) {
    EXPECT_EQ(parsed(QStringLiteral("- Milk\r\n+ Eggs\r\n- Bread\r\n")),
              (std::vector<Record>{{"Milk\r", 0}, {"Eggs\r", 1}, {"Bread", 0}}));
    EXPECT_EQ(parsed(QStringLiteral("a\rb")), (std::vector<Record>{{"a\rb", 0}}))
        << "a lone CR separates nothing";
    EXPECT_EQ(parsed(QStringLiteral("\r\n- Milk\r\n\r\n")), (std::vector<Record>{{"Milk", 0}}));
}

TEST_F(KRCheckListViewClipboardTests, TabsAreTrimmedLikeSpacesAndKeptInside) {
    EXPECT_EQ(parsed(QStringLiteral("\t+\tMilk\tand eggs\t\n\t\t-\t\tBread")),
              (std::vector<Record>{{"Milk\tand eggs", 1}, {"Bread", 0}}));
}

// Each line loses spaces of every kind (and tabs) at its ends, but not line ends, which only the whole text
// loses at its ends; characters that are not spaces stay.
TEST_F(KRCheckListViewClipboardTests, LinesAreTrimmedOfUnicodeSpacesButNotOfOtherCharacters) {
    EXPECT_EQ(parsed(QStringLiteral("\u00A0\u3000+\u2003Milk\u00A0\n\u200B- Eggs")),
              (std::vector<Record>{{"Milk", 1}, {QStringLiteral("\u200B- Eggs"), 0}}))
        << "no-break and ideographic spaces are trimmed, a zero-width space is not";
    EXPECT_EQ(parsed(QStringLiteral("- Milk\u2028\n- Eggs\u0085\n- Jam\u2029")),
              (std::vector<Record>{
                  {QStringLiteral("Milk\u2028"), 0}, {QStringLiteral("Eggs\u0085"), 0}, {"Jam", 0}}))
        << "line and paragraph separators end only the whole text";
    EXPECT_EQ(parsed(QStringLiteral("\u2028\u0085\v\f- Milk\v")), (std::vector<Record>{{"Milk", 0}}));
}

TEST_F(KRCheckListViewClipboardTests, UnicodeTitlesComeBackAsTheyWere) {
    const QString combining = QStringLiteral("Cafe\u0301 cre\u0300me");
    const QString rightToLeft = QStringLiteral("\u05E7\u05E0\u05D4 \u05D7\u05DC\u05D1");
    const QString arabic = QStringLiteral("\u0627\u0634\u062A\u0631 \u062D\u0644\u064A\u0628");
    const QString surrogates = QStringLiteral("Eggs \U0001F95A and \U0001F95B");
    const QString text = QStringLiteral("- ") + combining + QStringLiteral("\n+ ") + rightToLeft +
                         QStringLiteral("\n- ") + arabic + QStringLiteral("\n+ ") + surrogates +
                         QStringLiteral("\n");
    EXPECT_EQ(parsed(text),
              (std::vector<Record>{{combining, 0}, {rightToLeft, 1}, {arabic, 0}, {surrogates, 1}}));
    EXPECT_EQ(parsed(QStringLiteral("- \U0001F95A")).front().title.size(), 2)
        << "a surrogate pair stays whole";
    EXPECT_EQ(parsed(QStringLiteral("+\u0301")), (std::vector<Record>{{QStringLiteral("\u0301"), 1}}))
        << "a combining mark on the marker is a title of its own";
}

TEST_F(KRCheckListViewClipboardTests, ACanceledItemCopiedAsTextComesBackCompleted) {
    showTitles({"Milk"}, {2});
    EXPECT_EQ(parsed(list->checkListViewStringRepresentationOfItemsAtIndexes(KRIndexSet{0})),
              (std::vector<Record>{{"Milk", 1}}));
}

TEST_F(KRCheckListViewClipboardTests, ParsedRecordsHaveOnlyATitleAndAStatus) {
    const QJsonArray records = KRCheckListView::checkListViewItemsAsJSONByParsingItemsAsString("+ Milk");
    ASSERT_EQ(records.size(), 1);
    EXPECT_EQ(records.at(0).toObject(), (QJsonObject{{"title", "Milk"}, {"status", 1}}));
}

// The JSON form
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewClipboardTests, TheJSONFormIsACompactArrayOfRecordsReadFromTheRows) {
    showTitles({"Milk", "Eggs", "Bread"}, {0, 2, 1});
    ASSERT_EQ(KRStringFromRect(rowAt(0)->frame()), QStringLiteral("{{0, 0}, {320, 28}}"))
        << "integral values print without decimals";
    const std::string thirdFrame = KRStringFromRect(rowAt(2)->frame()).toStdString();
    const QByteArray json = list->checkListViewJSONRepresentationOfItemsAtIndexes(KRIndexSet{0, 2});
    EXPECT_EQ(json.toStdString(), "[{\"frame\":\"{{0, 0}, {320, 28}}\",\"identifier\":\"i0\",\"index\":0,"
                                  "\"status\":0,\"title\":\"Milk\"},"
                                  "{\"frame\":\"" +
                                      thirdFrame +
                                      "\",\"identifier\":\"i2\",\"index\":2,"
                                      "\"status\":1,\"title\":\"Bread\"}]");
}

// The records written straight as bytes are the ones a JSON document of the same records writes: every
// character a title can hold, escaped or not, and statuses small and large.
TEST_F(KRCheckListViewClipboardTests, TheJSONFormHasTheBytesAJSONDocumentWritesForTheSameRecords) {
    std::mt19937 random(20261125);
    // Whole code points: a lone surrogate has no UTF-8 form, and either writer gives it as "?".
    QStringList alphabet = {QStringLiteral("a"),         QStringLiteral("Z"),      QStringLiteral("0"),
                            QStringLiteral(" "),         QStringLiteral("\""),     QStringLiteral("\\"),
                            QStringLiteral("/"),         QStringLiteral("\b"),     QStringLiteral("\f"),
                            QStringLiteral("\n"),        QStringLiteral("\r"),     QStringLiteral("\t"),
                            QStringLiteral("\u0001"),    QStringLiteral("\u001f"), QStringLiteral("\u007f"),
                            QStringLiteral("\u00e9"),    QStringLiteral("\u05d0"), QStringLiteral("\u4e2d"),
                            QStringLiteral("\U0001F389")};
    alphabet << QString(QChar(0x0000));
    QStringList titles;
    std::vector<KRUInteger> statuses;
    const std::vector<KRUInteger> someStatuses = {0, 1, 2, 7, 9007199254740993ull, KRUIntegerMax};
    for (int item = 0; item < 200; ++item) {
        QString title;
        const int length = static_cast<int>(random() % 12);
        for (int character = 0; character < length; ++character) {
            title += alphabet.at(static_cast<qsizetype>(random() % static_cast<unsigned>(alphabet.size())));
        }
        titles << title;
        statuses.push_back(someStatuses[random() % someStatuses.size()]);
    }
    showTitles(titles, statuses);
    rowAt(3)->setFrame(KRRectMake(0.5, 28.25, 320.125, 28));

    QJsonArray records;
    for (KRUInteger index = 0; index < list->numberOfItems(); ++index) {
        const KRCheckListItemView& row = *rowAt(index);
        QJsonObject record;
        record.insert(QStringLiteral("identifier"), row.itemIdentifier());
        record.insert(QStringLiteral("status"),
                      row.status() <= static_cast<KRUInteger>(std::numeric_limits<qint64>::max())
                          ? QJsonValue(static_cast<qint64>(row.status()))
                          : QJsonValue(static_cast<double>(row.status())));
        record.insert(QStringLiteral("title"), row.title());
        record.insert(QStringLiteral("frame"), KRStringFromRect(row.frame()));
        record.insert(QStringLiteral("index"), static_cast<qint64>(index));
        records.append(record);
    }
    const QByteArray written =
        list->checkListViewJSONRepresentationOfItemsAtIndexes(KRIndexSet(KRRange{0, list->numberOfItems()}));
    const QByteArray expected = QJsonDocument(records).toJson(QJsonDocument::Compact);
    qsizetype firstDifference = 0;
    while (firstDifference < std::min(written.size(), expected.size()) &&
           written.at(firstDifference) == expected.at(firstDifference)) {
        ++firstDifference;
    }
    EXPECT_EQ(written.mid(firstDifference, 40).toStdString(), expected.mid(firstDifference, 40).toStdString())
        << "first difference at byte " << firstDifference;
    QJsonParseError error;
    EXPECT_EQ(QJsonDocument::fromJson(written, &error).array(), records) << error.errorString().toStdString();
}

TEST_F(KRCheckListViewClipboardTests, TheJSONFormWritesFramesWithFractionsAsDecimals) {
    showTitles({"Milk"});
    rowAt(0)->setFrame(KRRectMake(0.5, 28.25, 320, 28));
    const QJsonArray records =
        QJsonDocument::fromJson(list->checkListViewJSONRepresentationOfItemsAtIndexes(KRIndexSet{0})).array();
    EXPECT_EQ(records.at(0).toObject().value("frame").toString(),
              QStringLiteral("{{0.5, 28.25}, {320, 28}}"));
}

TEST_F(KRCheckListViewClipboardTests, TheJSONFormIsUTF8) {
    showTitles({QStringLiteral("Gr\u00FC\u00DFe \U0001F95A")});
    const QByteArray json = list->checkListViewJSONRepresentationOfItemsAtIndexes(KRIndexSet{0});
    EXPECT_TRUE(json.contains(QStringLiteral("Gr\u00FC\u00DFe \U0001F95A").toUtf8()));
}

TEST_F(KRCheckListViewClipboardTests, TheWritersPassOverIndexesPastTheItems) {
    showTitles({"Milk", "Eggs"});
    EXPECT_EQ(list->checkListViewStringRepresentationOfItemsAtIndexes(KRIndexSet{1, 2, 99}),
              QStringLiteral("- Eggs\n"));
    EXPECT_EQ(QJsonDocument::fromJson(list->checkListViewJSONRepresentationOfItemsAtIndexes(KRIndexSet{5, 1}))
                  .array()
                  .size(),
              1);
}

TEST_F(KRCheckListViewClipboardTests, ReadingDataFillsInAMissingTitleAndStatus) {
    EXPECT_EQ(read(R"([{"title":"Milk"},{"status":2},{}])"),
              (std::vector<Record>{{"Milk", 0}, {"", 2}, {"", 0}}));
}

TEST_F(KRCheckListViewClipboardTests, ReadingDataKeepsOnlyTitleAndStatus) {
    const std::optional<QJsonArray> records = KRCheckListView::checkListViewItemsAsJSONByReadingData(
        R"([{"identifier":"x","status":1,"title":"Milk","frame":"{{0, 0}, {1, 1}}","index":4,"other":[1]}])");
    ASSERT_TRUE(records);
    EXPECT_EQ(records->at(0).toObject(), (QJsonObject{{"title", "Milk"}, {"status", 1}}));
}

TEST_F(KRCheckListViewClipboardTests, ReadingDataTakesIntegralStatusesWrittenAsDecimals) {
    EXPECT_EQ(read(R"([{"status":1.0},{"status":2e0},{"status":-0}])"),
              (std::vector<Record>{{"", 1}, {"", 2}, {"", 0}}));
}

TEST_F(KRCheckListViewClipboardTests, ReadingDataRejectsAnythingButAnArrayOfRecords) {
    for (const char* data : {"", "null", "{}", R"({"title":"Milk"})", "\"Milk\"", "3", "[1]", "[[]]",
                             R"([{"title":"Milk"},null])", R"([{"title":"Milk"},"Eggs"])", "[{}]x", "[{}"}) {
        EXPECT_FALSE(read(QByteArray(data))) << data;
    }
}

TEST_F(KRCheckListViewClipboardTests, ReadingDataRejectsATitleThatIsNotAString) {
    for (const char* data : {R"([{"title":1}])", R"([{"title":null}])", R"([{"title":["Milk"]}])",
                             R"([{"title":{"text":"Milk"}}])", R"([{"title":true}])"}) {
        EXPECT_FALSE(read(QByteArray(data))) << data;
    }
}

TEST_F(KRCheckListViewClipboardTests, ReadingDataRejectsAStatusThatIsNotANonNegativeInteger) {
    for (const char* data :
         {R"([{"status":-1}])", R"([{"status":1.5}])", R"([{"status":"1"}])", R"([{"status":null}])",
          R"([{"status":true}])", R"([{"status":1e300}])", R"([{"status":-1e300}])",
          R"([{"status":18446744073709551616}])", R"([{"status":[1]}])"}) {
        EXPECT_FALSE(read(QByteArray(data))) << data;
    }
}

TEST_F(KRCheckListViewClipboardTests, ReadingDataRejectsDeepNestingWithoutOverflowingTheStack) {
    const int depth = 1000000;
    EXPECT_FALSE(read(QByteArray(depth, '[') + QByteArray(depth, ']')));
    EXPECT_FALSE(read(QByteArray("[{\"title\":\"Milk\",\"x\":") + QByteArray(depth, '{')));
}

TEST_F(KRCheckListViewClipboardTests, ReadingDataTakesNestingInKeysItDoesNotRead) {
    const int depth = 200;
    const QByteArray data = QByteArray("[{\"title\":\"Milk\",\"x\":") + QByteArray(depth, '[') +
                            QByteArray(depth, ']') + QByteArray("}]");
    EXPECT_EQ(read(data), (std::vector<Record>{{"Milk", 0}}));
}

// Loading a row from a record
// ------------------------------------------------------------------------------------------------------

namespace {

// Records each change of a row's title, status and frame with what the row holds at that moment.
class RowChangeRecorder : public KRObject {
public:
    explicit RowChangeRecorder(KRCheckListItemView& row) : m_row(row) {
        for (const char* key : {"title", "status", "frame"}) {
            m_row.addObserver(this, key, 0, nullptr);
        }
    }
    ~RowChangeRecorder() override {
        for (const char* key : {"title", "status", "frame"}) {
            m_row.removeObserver(this, key, nullptr);
        }
    }
    void observeValueForKeyPath(const char* keyPath, KRObject*, const KRKeyValueChange&,
                                const void*) override {
        changes << QStringLiteral("%1 identifier %2 in batch %3")
                       .arg(QLatin1String(keyPath), m_row.itemIdentifier().toString())
                       .arg(m_row.updateCount());
    }
    QStringList changes;

private:
    KRCheckListItemView& m_row;
};

} // namespace

TEST_F(KRCheckListViewClipboardTests, ARowLoadsTitleIdentifierStatusAndFrameFromARecordInOneUpdate) {
    showTitles({"Milk"});
    KRCheckListItemView row;
    row.setItemIdentifier(QJsonValue(QStringLiteral("old")));
    const QJsonObject record{{"identifier", "x7"},
                             {"status", 2},
                             {"title", "Eggs"},
                             {"frame", "{{4, 28.5}, {300, 56}}"},
                             {"index", 3}};
    {
        RowChangeRecorder recorder(row);
        list->checkListViewInitCheckListItemViewWithJSON(&row, record);
        // A new frame reports its origin and its size.
        QStringList changes = recorder.changes;
        changes.removeDuplicates();
        EXPECT_EQ(linesOf(changes),
                  linesOf(QStringList{"title identifier old in batch 1", "status identifier x7 in batch 1",
                                      "frame identifier x7 in batch 1"}))
            << "title, identifier, status, frame, in that order, inside one update of the row";
    }
    EXPECT_EQ(row.title(), QStringLiteral("Eggs"));
    EXPECT_EQ(row.itemIdentifier(), QJsonValue(QStringLiteral("x7")));
    EXPECT_EQ(row.status(), 2u);
    EXPECT_EQ(row.frame(), KRRectMake(4, 28.5, 300, 56));
    EXPECT_EQ(row.updateCount(), 0) << "the update is over";
    EXPECT_FALSE(row.isUpdateScheduled());
    EXPECT_TRUE(log->messages().isEmpty());
}

TEST_F(KRCheckListViewClipboardTests, ARowLoadsAnUnreadableRecordAsEmptyValues) {
    showTitles({"Milk"});
    KRCheckListItemView row;
    list->checkListViewInitCheckListItemViewWithJSON(
        &row, QJsonObject{{"title", 3}, {"status", -2}, {"frame", "garbage"}});
    EXPECT_EQ(row.title(), QString());
    EXPECT_EQ(row.status(), 0u);
    EXPECT_EQ(row.frame(), KRRectZero);
}

TEST_F(KRCheckListViewClipboardTests, ARowLoadsAWrittenRecordBackAsItWas) {
    showTitles({"Milk", "Eggs"}, {0, 1});
    const QJsonArray records =
        QJsonDocument::fromJson(list->checkListViewJSONRepresentationOfItemsAtIndexes(KRIndexSet{1})).array();
    KRCheckListItemView row;
    list->checkListViewInitCheckListItemViewWithJSON(&row, records.at(0).toObject());
    EXPECT_EQ(row.title(), rowAt(1)->title());
    EXPECT_EQ(row.itemIdentifier(), rowAt(1)->itemIdentifier());
    EXPECT_EQ(row.status(), rowAt(1)->status());
    EXPECT_EQ(row.frame(), rowAt(1)->frame());
}

TEST_F(KRCheckListViewClipboardTests, LoadingANilRowIsAnError) {
    const std::optional<AssertionFailure> failure =
        assertionFailureOf([&] { list->checkListViewInitCheckListItemViewWithJSON(nullptr, QJsonObject()); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->file, QStringLiteral("KRCheckListView"));
    EXPECT_EQ(failure->method, QStringLiteral("checkListViewInitCheckListItemView:withJSON:"));
}

// Copy and cut
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewClipboardTests, CopyDeclaresBothTypesWithTheListAsOwnerThenWritesThem) {
    showTitles({"Milk", "Eggs", "Bread"}, {0, 1, 0});
    selectItems(KRIndexSet{0, 1});
    const KRInteger before = pasteboard->changeCount();
    list->copy();
    EXPECT_EQ(pasteboard->changeCount(), before + 1) << "one declaration clears the pasteboard";
    EXPECT_EQ(pasteboard->types(),
              (QStringList{KRCheckListItemsAsJSONPasteboardType, KRPasteboardTypeString}));
    EXPECT_EQ(pasteboard->owner(), list.get());
    EXPECT_EQ(pasteboard->dataForType(KRCheckListItemsAsJSONPasteboardType),
              list->checkListViewJSONRepresentationOfItemsAtIndexes(KRIndexSet{0, 1}));
    EXPECT_EQ(pasteboard->stringForType(KRPasteboardTypeString), QStringLiteral("- Milk\n+ Eggs\n"));
    EXPECT_TRUE(log->messages().isEmpty()) << "copying asks no client";
}

TEST_F(KRCheckListViewClipboardTests, CopyReplacesWhatThePasteboardHeld) {
    showTitles({"Milk"});
    pasteboard->declareTypes({KRPasteboardTypeHTML}, nullptr);
    pasteboard->setString(QStringLiteral("<b>x</b>"), KRPasteboardTypeHTML);
    selectItems(KRIndexSet{0});
    list->copy();
    EXPECT_FALSE(pasteboard->dataForType(KRPasteboardTypeHTML));
}

TEST_F(KRCheckListViewClipboardTests, CopyWithAnItemMerelyEditedWritesAnEmptyList) {
    showTitles({"Milk", "Eggs"});
    editItem(1, KRMakeRange(0, 0));
    list->copy();
    EXPECT_EQ(pasteboard->dataForType(KRCheckListItemsAsJSONPasteboardType), QByteArray("[]"));
    EXPECT_EQ(pasteboard->stringForType(KRPasteboardTypeString), QString());
    EXPECT_EQ(list->indexForEditedItem(), 1u) << "copying leaves the edit alone";
}

TEST_F(KRCheckListViewClipboardTests, CutCopiesThenDeletesTheSelection) {
    showTitles({"Milk", "Eggs", "Bread", "Jam"}, {0, 1, 0, 0});
    selectItems(KRIndexSet{1, 2});
    list->cut();
    EXPECT_EQ(pasteboard->stringForType(KRPasteboardTypeString), QStringLiteral("+ Eggs\n- Bread\n"));
    EXPECT_EQ(read(*pasteboard->dataForType(KRCheckListItemsAsJSONPasteboardType)),
              (std::vector<Record>{{"Eggs", 1}, {"Bread", 0}}));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Jam"}));
    EXPECT_EQ(list->indexForEditedItem(), 1u) << "delete edits the item that followed the cut ones";
    EXPECT_EQ(log->messages().value(0), QStringLiteral("willRemoveItemsAtIndexes {1, 2}"))
        << "copying sends nothing before the deletion";
}

// Paste: the full message sequence
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewClipboardTests, PastingCopiedItemsOverASelectionSendsEveryMessageInOrder) {
    showNumberedItems(10);
    selectItems(KRIndexSet{2, 4});
    list->copy();
    EXPECT_EQ(read(*pasteboard->dataForType(KRCheckListItemsAsJSONPasteboardType)).value().size(), 2u);
    EXPECT_EQ(pasteboard->stringForType(KRPasteboardTypeString), QStringLiteral("- Item 2\n- Item 4\n"));
    selectItems(KRIndexSet{7});

    list->paste();
    const auto insertion = [](int index) {
        const QString i = QString::number(index);
        return QStringList{"willInsertItemsAtIndexes {" + i + "}",
                           "insertItemsAtIndexes {" + i + "}",
                           "willBeginUpdates",
                           "willUpdateByInsertingItemsAtIndexes {" + i + "}",
                           "willUpdateByInsertingItemsAtIndexes {" + i + "} animated false",
                           "identifierForItemAtIndex " + i,
                           "statusForItemAtIndex " + i,
                           "titleForItemAtIndex " + i,
                           "didUpdateByInsertingItemsAtIndexes {" + i + "}",
                           "didUpdateByInsertingItemsAtIndexes {" + i + "} animated false",
                           "didChangeSizeThatFits",
                           "didEndUpdates",
                           "didInsertItemsAtIndexes {" + i + "}"};
    };
    QStringList expected{"beginGrouping"};
    expected << insertion(8)
             << QStringList{"validateChangedTitle \"Item 2\" forItemAtIndex 8",
                            "validateChangedStatus 0 forItemAtIndex 8", "willEndEditingItemAtIndex 8"};
    expected << insertion(9)
             << QStringList{"validateChangedTitle \"Item 4\" forItemAtIndex 9",
                            "validateChangedStatus 0 forItemAtIndex 9", "willEndEditingItemAtIndex 9"};
    expected << QStringList{"willRemoveItemsAtIndexes {7}",
                            "removeItemsAtIndexes {7}",
                            "willBeginUpdates",
                            "willUpdateByRemovingItemsAtIndexes {7}",
                            "willUpdateByRemovingItemsAtIndexes {7} animated false",
                            "didUpdateByRemovingItemsAtIndexes {7}",
                            "didUpdateByRemovingItemsAtIndexes {7} animated false",
                            "didChangeSizeThatFits",
                            "didEndUpdates",
                            "didRemoveItemsAtIndexes {7}",
                            "endGrouping"};
    EXPECT_EQ(linesOf(log->messages()), linesOf(expected));
    EXPECT_EQ(list->indexForEditedItem(), KRNotFound) << "editing waits for the next turn";
    EXPECT_EQ(list->indexesForSelectedItems(), KRIndexSet{7})
        << "this data source leaves the selection to it";

    log->clear();
    KRRunLoop::main().runOneTurn();
    EXPECT_EQ(linesOf(log->messages()),
              linesOf(QStringList{"willSelectItemsAtIndexes {}", "didSelectItemsAtIndexes {}",
                                  "willBeginEditingItemAtIndex 8", "didBeginEditingItemAtIndex 8"}));
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty()) << "beginning to edit deselects";
    EXPECT_EQ(list->indexForEditedItem(), 8u) << "the last pasted item";
    EXPECT_EQ(selectionInTitleAtIndex(8), "{6, 0}") << "the caret at the end of its title";
    EXPECT_EQ(linesOf(storedTitles()),
              linesOf(QStringList{"Item 0", "Item 1", "Item 2", "Item 3", "Item 4", "Item 5", "Item 6",
                                  "Item 2", "Item 4", "Item 8", "Item 9"}));
    EXPECT_EQ(linesOf(rowTitles()), linesOf(storedTitles()));
}

// The edge cases
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewClipboardTests, CopyOfTwoSeparateItemsWritesTwoRecordsAndTwoLines) {
    showNumberedItems(10);
    groupingDataSource->items[4].status = 1;
    list->reloadItems();
    selectItems(KRIndexSet{2, 4});
    list->copy();
    EXPECT_EQ(read(*pasteboard->dataForType(KRCheckListItemsAsJSONPasteboardType)),
              (std::vector<Record>{{"Item 2", 0}, {"Item 4", 1}}));
    const QJsonArray records =
        QJsonDocument::fromJson(*pasteboard->dataForType(KRCheckListItemsAsJSONPasteboardType)).array();
    EXPECT_EQ(records.at(0).toObject().value("index").toInteger(), 2);
    EXPECT_EQ(records.at(1).toObject().value("index").toInteger(), 4);
    EXPECT_EQ(records.at(1).toObject().value("identifier").toString(), QStringLiteral("i4"));
    EXPECT_EQ(pasteboard->stringForType(KRPasteboardTypeString), QStringLiteral("- Item 2\n+ Item 4\n"));
}

TEST_F(KRCheckListViewClipboardTests,
       PastingTwoItemsWithItemSevenSelectedInsertsAtEightAndNineAndRemovesSeven) {
    showNumberedItems(10);
    groupingDataSource->items[4].status = 2;
    list->reloadItems();
    selectItems(KRIndexSet{2, 4});
    list->copy();
    selectItems(KRIndexSet{7});
    list->paste();
    EXPECT_EQ(linesOf(log->startingWith({"insertItemsAtIndexes", "removeItemsAtIndexes"})),
              linesOf(QStringList{"insertItemsAtIndexes {8}", "insertItemsAtIndexes {9}",
                                  "removeItemsAtIndexes {7}"}));
    EXPECT_EQ(linesOf(storedTitles()),
              linesOf(QStringList{"Item 0", "Item 1", "Item 2", "Item 3", "Item 4", "Item 5", "Item 6",
                                  "Item 2", "Item 4", "Item 8", "Item 9"}));
    EXPECT_EQ(storedStatuses(), (std::vector<KRUInteger>{0, 0, 0, 0, 2, 0, 0, 0, 2, 0, 0}))
        << "the records keep statuses";
    EXPECT_EQ(rowStatuses(), storedStatuses());
}

TEST_F(KRCheckListViewClipboardTests, PasteWhileEditingAnEmptyItemWithNothingSelectedReplacesIt) {
    showTitles({"Milk", "Eggs", "Bread", "", "Jam"});
    putText(QStringLiteral("- Tea\n+ Coffee\n"));
    editItem(3, KRMakeRange(0, 0));
    list->paste();
    EXPECT_EQ(linesOf(log->startingWith({"willEndEditing", "didEndEditing", "insertItemsAtIndexes",
                                         "removeItemsAtIndexes", "beginGrouping", "endGrouping"})),
              linesOf(QStringList{"willEndEditingItemAtIndex 3", "didEndEditingItemAtIndex 3",
                                  "beginGrouping", "insertItemsAtIndexes {4}", "willEndEditingItemAtIndex 4",
                                  "insertItemsAtIndexes {5}", "willEndEditingItemAtIndex 5",
                                  "removeItemsAtIndexes {3}", "endGrouping"}));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Eggs", "Bread", "Tea", "Coffee", "Jam"}));
    EXPECT_EQ(storedStatuses(), (std::vector<KRUInteger>{0, 0, 0, 0, 1, 0}));
    KRRunLoop::main().runOneTurn();
    EXPECT_EQ(list->indexForEditedItem(), 4u);
    EXPECT_EQ(selectionInTitleAtIndex(4), "{6, 0}");
}

TEST_F(KRCheckListViewClipboardTests, PasteWhileEditingANonEmptyItemInsertsBelowItAndKeepsIt) {
    showTitles({"Milk", "Eggs", "Bread", "Butter", "Jam"});
    putText(QStringLiteral("Tea\nCoffee"));
    editItem(3, KRMakeRange(2, 0));
    list->paste();
    EXPECT_EQ(linesOf(log->startingWith({"insertItemsAtIndexes", "removeItemsAtIndexes"})),
              linesOf(QStringList{"insertItemsAtIndexes {4}", "insertItemsAtIndexes {5}",
                                  "removeItemsAtIndexes {}"}));
    EXPECT_EQ(linesOf(storedTitles()),
              linesOf(QStringList{"Milk", "Eggs", "Bread", "Butter", "Tea", "Coffee", "Jam"}));
    KRRunLoop::main().runOneTurn();
    EXPECT_EQ(list->indexForEditedItem(), 5u);
}

TEST_F(KRCheckListViewClipboardTests, PastingTwoLinesWhileEditingGivesTwoNewItemsNotTextInTheTitle) {
    showTitles({"Milk", "Eggs"});
    putText(QStringLiteral("Tea\nCoffee"));
    editItem(0, KRMakeRange(2, 0));
    list->paste();
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Tea", "Coffee", "Eggs"}));
    EXPECT_EQ(rowAt(0)->title(), QStringLiteral("Milk"));
}

TEST_F(KRCheckListViewClipboardTests, PastingASingleLineWhileEditingTypesItIntoTheTitle) {
    showTitles({"Milk", "Eggs"});
    putText(QStringLiteral("Tea"));
    editItem(0, KRMakeRange(1, 2));
    list->paste();
    EXPECT_EQ(linesOf(log->messages()),
              linesOf(QStringList{"validateChangedTitle \"MTeak\" forItemAtIndex 0"}))
        << "typing, validated like a keystroke; no item is inserted";
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"MTeak", "Eggs"}));
    EXPECT_EQ(list->indexForEditedItem(), 0u) << "editing goes on in that title";
    EXPECT_EQ(selectionInTitleAtIndex(0), "{4, 0}");
    KRRunLoop::main().runUntilIdle();
    EXPECT_FALSE(log->contains(QStringLiteral("willBeginEditingItemAtIndex 0"))) << "no edit begins later";
    EXPECT_EQ(list->indexForEditedItem(), 0u);
}

TEST_F(KRCheckListViewClipboardTests, PastingASingleLineWithMarkersWhileEditingTypesItAsItIs) {
    showTitles({"Milk"});
    putText(QStringLiteral("+ Tea"));
    editItem(0, KRMakeRange(4, 0));
    list->paste();
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk+ Tea"}));
}

TEST_F(KRCheckListViewClipboardTests, PastingWithNothingEditedOrSelectedAppendsAtTheEnd) {
    showTitles({"Milk", "Eggs"});
    putText(QStringLiteral("+ Tea"));
    focusWithoutEditing();
    list->paste();
    EXPECT_EQ(linesOf(log->startingWith({"insertItemsAtIndexes", "removeItemsAtIndexes"})),
              linesOf(QStringList{"insertItemsAtIndexes {2}", "removeItemsAtIndexes {}"}));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Eggs", "Tea"}));
    EXPECT_EQ(storedStatuses(), (std::vector<KRUInteger>{0, 0, 1}));
    KRRunLoop::main().runOneTurn();
    EXPECT_EQ(list->indexForEditedItem(), 2u);
}

TEST_F(KRCheckListViewClipboardTests, PastingASingleLineWithNothingEditedGivesOneItem) {
    showTitles({});
    putText(QStringLiteral("Tea"));
    focusWithoutEditing();
    list->paste();
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Tea"}));
}

TEST_F(KRCheckListViewClipboardTests, TheLastSelectedItemDecidesWhereTheItemsGo) {
    showNumberedItems(6);
    putText(QStringLiteral("Tea\nCoffee"));
    selectItems(KRIndexSet{1, 3});
    list->paste();
    EXPECT_EQ(linesOf(log->startingWith({"insertItemsAtIndexes", "removeItemsAtIndexes"})),
              linesOf(QStringList{"insertItemsAtIndexes {4}", "insertItemsAtIndexes {5}",
                                  "removeItemsAtIndexes {1, 3}"}));
    EXPECT_EQ(linesOf(storedTitles()),
              linesOf(QStringList{"Item 0", "Item 2", "Tea", "Coffee", "Item 4", "Item 5"}));
    KRRunLoop::main().runOneTurn();
    EXPECT_EQ(list->indexForEditedItem(), 3u) << "the last pasted item, after the removal";
}

TEST_F(KRCheckListViewClipboardTests, TheValidatorsAnswersAreWhatThePastedRowsShow) {
    showTitles({"Milk"});
    putData(R"([{"title":"tea","status":1},{"title":"coffee","status":0}])");
    groupingDataSource->titleValidator = [this](const QString& title, KRUInteger index) {
        groupingDataSource->items.at(index).title = title.toUpper();
        return title.toUpper();
    };
    groupingDataSource->statusValidator = [this](KRUInteger, KRUInteger index) {
        groupingDataSource->items.at(index).status = 2;
        return KRUInteger{2};
    };
    focusWithoutEditing();
    list->paste();
    EXPECT_EQ(linesOf(rowTitles()), linesOf(QStringList{"Milk", "TEA", "COFFEE"}));
    EXPECT_EQ(rowStatuses(), (std::vector<KRUInteger>{0, 2, 2}));
    EXPECT_EQ(linesOf(log->startingWith({"validate"})),
              linesOf(QStringList{"validateChangedTitle \"tea\" forItemAtIndex 1",
                                  "validateChangedStatus 1 forItemAtIndex 1",
                                  "validateChangedTitle \"coffee\" forItemAtIndex 2",
                                  "validateChangedStatus 0 forItemAtIndex 2"}));
}

TEST_F(KRCheckListViewClipboardTests, RecordsWithoutTitleOrStatusGiveAnEmptyTitleAndStatusZero) {
    showTitles({"Milk"});
    putData(R"([{"status":1},{"title":"Tea"},{}])");
    focusWithoutEditing();
    list->paste();
    EXPECT_EQ(linesOf(log->startingWith({"validate"})),
              linesOf(QStringList{
                  "validateChangedTitle \"\" forItemAtIndex 1", "validateChangedStatus 1 forItemAtIndex 1",
                  "validateChangedTitle \"Tea\" forItemAtIndex 2", "validateChangedStatus 0 forItemAtIndex 2",
                  "validateChangedTitle \"\" forItemAtIndex 3", "validateChangedStatus 0 forItemAtIndex 3"}));
}

TEST_F(KRCheckListViewClipboardTests, PasteTakesTheRecordsOverTheText) {
    showTitles({"Milk"});
    putData(R"([{"title":"Tea","status":2}])", QStringLiteral("- Something else\n- entirely"));
    focusWithoutEditing();
    list->paste();
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Tea"}));
    EXPECT_EQ(storedStatuses(), (std::vector<KRUInteger>{0, 2}));
}

TEST_F(KRCheckListViewClipboardTests, RecordsArePastedEvenWhileATitleIsEdited) {
    showTitles({"Milk", "Eggs"});
    putData(R"([{"title":"Tea"}])", QStringLiteral("Tea"));
    editItem(0, KRMakeRange(4, 0));
    list->paste();
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Tea", "Eggs"})) << "an item, not typing";
}

TEST_F(KRCheckListViewClipboardTests, AnEmptyArrayOfRecordsPastesNothingAndIgnoresTheText) {
    showTitles({"Milk"});
    putData("[]", QStringLiteral("Tea"));
    focusWithoutEditing();
    list->paste();
    EXPECT_TRUE(log->messages().isEmpty());
    EXPECT_EQ(KRRunLoop::main().runOneTurn(), 0);
}

TEST_F(KRCheckListViewClipboardTests, DataThatIsNotJSONFallsBackToTheTextSilently) {
    showTitles({"Milk"});
    putData("this is not JSON", QStringLiteral("+ Tea"));
    auto handler = std::make_shared<RecordingAssertionHandler>();
    KRAssertionHandler::setCurrentHandler(handler);
    focusWithoutEditing();
    list->paste();
    EXPECT_TRUE(handler->failures.isEmpty());
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Tea"}));
    EXPECT_EQ(storedStatuses(), (std::vector<KRUInteger>{0, 1}));
}

TEST_F(KRCheckListViewClipboardTests, NoItemsAndNoTextOnThePasteboardIsAnError) {
    showTitles({"Milk"});
    focusWithoutEditing();
    const std::optional<AssertionFailure> failure = assertionFailureOf([&] { list->paste(); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->method, QStringLiteral("paste:"));
    EXPECT_EQ(failure->file, QStringLiteral("KRCheckListView"));
    EXPECT_EQ(failure->object, list.get());
    EXPECT_EQ(
        failure->message,
        QStringLiteral("[ERROR] Can't paste check list items, no check list items found on pastebaord"));
}

TEST_F(KRCheckListViewClipboardTests, WithAssertionsDisabledAPasteWithoutTextChangesNothing) {
    showTitles({"Milk", ""});
    editItem(1, KRMakeRange(0, 0));
    putData("not JSON");
    auto handler = std::make_shared<RecordingAssertionHandler>();
    KRAssertionHandler::setCurrentHandler(handler);
    list->paste();
    EXPECT_EQ(linesOf(handler->failures),
              linesOf(QStringList{
                  "paste: KRCheckListView: [ERROR] Can't paste check list items, no check list items "
                  "found on pastebaord"}));
    EXPECT_TRUE(log->messages().isEmpty());
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(KRRunLoop::main().runOneTurn(), 0);
}

TEST_F(KRCheckListViewClipboardTests, EmptyTextWithNothingEditedPastesOneEmptyItem) {
    showTitles({"Milk"});
    putText(QString());
    focusWithoutEditing();
    list->paste();
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", ""}));
}

TEST_F(KRCheckListViewClipboardTests, AfterAPasteNothingIsSelectedAndTheLastPastedItemIsEdited) {
    showNumberedItems(4);
    putText(QStringLiteral("a\nb\nc"));
    selectItems(KRIndexSet{0, 1});
    list->paste();
    KRRunLoop::main().runOneTurn();
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    EXPECT_EQ(indexesOf(selectedRows()), indexesOf(KRIndexSet()));
    EXPECT_EQ(list->indexForEditedItem(), 2u);
    EXPECT_EQ(indexesOf(editedRows()), indexesOf(KRIndexSet{2}));
    EXPECT_EQ(linesOf(rowTitles()), linesOf(QStringList{"a", "b", "c", "Item 2", "Item 3"}));
}

TEST_F(KRCheckListViewClipboardTests, NoSelectedIndexOutlivesTheReplacedSelection) {
    showNumberedItems(6);
    putText(QStringLiteral("Tea"));
    selectItems(KRIndexSet(KRRange{1, 5}));
    list->paste();
    EXPECT_EQ(list->numberOfItems(), 2u);
    EXPECT_TRUE(selectionIsWithinTheItems());
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    EXPECT_EQ(indexesOf(selectedRows()), indexesOf(KRIndexSet()));
    KRRunLoop::main().runOneTurn();
    EXPECT_EQ(list->indexForEditedItem(), 1u);
}

TEST_F(KRCheckListViewClipboardTests, TheDeferredEditIsDroppedWhenTheListIsGone) {
    showTitles({"Milk"});
    putText(QStringLiteral("Tea"));
    focusWithoutEditing();
    list->paste();
    window.makeFirstResponder(nullptr);
    list->removeFromSuperview();
    list.reset();
    log->clear();
    KRRunLoop::main().runUntilIdle();
    EXPECT_TRUE(log->messages().isEmpty()) << "the deferred edit finds no list";
}

TEST_F(KRCheckListViewClipboardTests, TheDeferredEditFallsBackToTheLastItemWhenThePastedRowIsGone) {
    showTitles({"Milk", "Eggs"});
    putText(QStringLiteral("Tea"));
    focusWithoutEditing();
    list->paste();
    // The host removes the pasted item before the next turn.
    list->removeItemAtIndex(2);
    KRRunLoop::main().runOneTurn();
    EXPECT_EQ(list->indexForEditedItem(), 1u);
}

// Stale selections: a client that removed items without fixing the selection
// ------------------------------------------------------------------------------------------------------

namespace {

// Removes the last items behind the list's back: only the update is reported, the selection stays.
void removeTrailingItemsLeavingTheSelection(KRCheckListView& list, FullRecordingDataSource& dataSource,
                                            KRUInteger count) {
    const KRUInteger first = dataSource.items.size() - count;
    dataSource.items.resize(first);
    list.beginUpdates();
    list.updateByRemovingItemsAtIndexes(KRIndexSet(KRRange{first, count}));
    list.endUpdates();
}

} // namespace

TEST_F(KRCheckListViewClipboardTests, CopyPassesOverSelectedIndexesPastTheItems) {
    showNumberedItems(5);
    selectItems(KRIndexSet{1, 3, 4});
    removeTrailingItemsLeavingTheSelection(*list, *groupingDataSource, 2);
    ASSERT_EQ(list->indexesForSelectedItems().lastIndex(), 4u) << "the selection is stale";
    list->copy();
    EXPECT_EQ(pasteboard->stringForType(KRPasteboardTypeString), QStringLiteral("- Item 1\n"));
    EXPECT_EQ(read(*pasteboard->dataForType(KRCheckListItemsAsJSONPasteboardType)),
              (std::vector<Record>{{"Item 1", 0}}));
}

TEST_F(KRCheckListViewClipboardTests, PasteIgnoresSelectedIndexesPastTheItems) {
    showNumberedItems(5);
    selectItems(KRIndexSet{1, 4});
    removeTrailingItemsLeavingTheSelection(*list, *groupingDataSource, 2);
    putText(QStringLiteral("Tea\nCoffee"));
    log->clear();
    list->paste();
    EXPECT_EQ(linesOf(log->startingWith({"insertItemsAtIndexes", "removeItemsAtIndexes"})),
              linesOf(QStringList{"insertItemsAtIndexes {2}", "insertItemsAtIndexes {3}",
                                  "removeItemsAtIndexes {1}"}));
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Item 0", "Tea", "Coffee", "Item 2"}));
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    KRRunLoop::main().runOneTurn();
    EXPECT_EQ(list->indexForEditedItem(), 2u);
}

TEST_F(KRCheckListViewClipboardTests, PasteWithAWhollyStaleSelectionAppendsAndClearsIt) {
    showNumberedItems(4);
    selectItems(KRIndexSet{3});
    removeTrailingItemsLeavingTheSelection(*list, *groupingDataSource, 2);
    putText(QStringLiteral("Tea\nCoffee\nJam"));
    log->clear();
    list->paste();
    EXPECT_EQ(linesOf(log->startingWith({"insertItemsAtIndexes", "removeItemsAtIndexes"})),
              linesOf(QStringList{"insertItemsAtIndexes {2}", "insertItemsAtIndexes {3}",
                                  "insertItemsAtIndexes {4}", "removeItemsAtIndexes {}"}));
    EXPECT_LT(list->indexesForSelectedItems().lastIndex(), list->numberOfItems())
        << "no selected number points past the rows";
    KRRunLoop::main().runOneTurn();
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty()) << "editing the last pasted item deselects";
    EXPECT_EQ(list->indexForEditedItem(), 4u);
    EXPECT_EQ(indexesOf(selectedRows()), indexesOf(KRIndexSet()));
}

TEST_F(KRCheckListViewClipboardTests, PasteOverEveryItemWithFewerLinesLeavesNoSelectedNumberPastTheRows) {
    showNumberedItems(5);
    selectItems(KRIndexSet(KRRange{0, 5}));
    putText(QStringLiteral("Tea\nCoffee"));
    log->clear();
    list->paste();
    EXPECT_EQ(linesOf(rowTitles()), linesOf(QStringList{"Tea", "Coffee"}));
    EXPECT_TRUE(list->indexesForSelectedItems().isEmpty());
    KRRunLoop::main().runOneTurn();
    EXPECT_EQ(list->indexForEditedItem(), 1u);
}

// Hostile data under the private type: whatever cannot be read whole is passed over for the text, and
// nothing is inserted before the whole of it has been read
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewClipboardTests, DataThatIsNotAnArrayOfRecordsFallsBackToTheText) {
    for (const char* data :
         {R"({"title":"Bad","status":1})", R"("Bad")", "[1, 2]", R"([{"title":"Bad"}, []])",
          R"([{"title":["Bad"]}])", R"([{"title":"Bad","status":-1}])", R"([{"title":"Bad","status":0.5}])",
          R"([{"title":"Bad","status":"1"}])"}) {
        showTitles({"Milk"});
        putData(QByteArray(data), QStringLiteral("+ Tea"));
        focusWithoutEditing();
        list->paste();
        EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Tea"})) << data;
        EXPECT_EQ(storedStatuses(), (std::vector<KRUInteger>{0, 1})) << data;
        EXPECT_EQ(log->count(QStringLiteral("insertItemsAtIndexes {1}")), 1) << data;
        KRRunLoop::main().runUntilIdle();
    }
}

TEST_F(KRCheckListViewClipboardTests, ABadRecordAfterMegabytesOfGoodOnesInsertsNoneOfThem) {
    showTitles({"Milk"});
    QByteArray data("[");
    const QByteArray good(
        R"({"title":"A good record with a title of some length to fill the data","status":1},)");
    const int goodRecords = 40000;
    for (int index = 0; index < goodRecords; ++index) {
        data += good;
    }
    data += R"({"title":42}])";
    ASSERT_GT(data.size(), 3 * 1000 * 1000);
    putData(data, QStringLiteral("Tea"));
    focusWithoutEditing();
    list->paste();
    EXPECT_EQ(log->startingWith({"insertItemsAtIndexes"}).size(), 1) << "only the text's one item";
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Tea"}));
}

TEST_F(KRCheckListViewClipboardTests, MegabytesOfGarbageFallBackToTheText) {
    showTitles({"Milk"});
    std::mt19937 random(20240611);
    std::uniform_int_distribution<int> byte(0, 255);
    QByteArray data(2 * 1024 * 1024, '\0');
    for (char& character : data) {
        character = static_cast<char>(byte(random));
    }
    data[0] = '[';
    putData(data, QStringLiteral("Tea"));
    focusWithoutEditing();
    list->paste();
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Tea"}));
}

TEST_F(KRCheckListViewClipboardTests, DeeplyNestedDataFallsBackToTheText) {
    showTitles({"Milk"});
    const int depth = 1000000;
    putData(QByteArray(depth, '[') + QByteArray(depth, ']'), QStringLiteral("Tea"));
    focusWithoutEditing();
    list->paste();
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Tea"}));
}

TEST_F(KRCheckListViewClipboardTests, InvalidUTF8InTheDataFallsBackToTheText) {
    showTitles({"Milk"});
    putData(QByteArray("[{\"title\":\"Bad \xFF\xFE\"}]"), QStringLiteral("Tea"));
    focusWithoutEditing();
    list->paste();
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Tea"}));
}

TEST_F(KRCheckListViewClipboardTests, HostileDataWithoutTextIsTheMissingItemsErrorAndChangesNothing) {
    showTitles({"Milk"});
    putData(R"([{"title":"Bad","status":-3}])");
    auto handler = std::make_shared<RecordingAssertionHandler>();
    KRAssertionHandler::setCurrentHandler(handler);
    focusWithoutEditing();
    list->paste();
    EXPECT_EQ(handler->failures.size(), 1);
    EXPECT_TRUE(log->messages().isEmpty());
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk"}));
}

TEST_F(KRCheckListViewClipboardTests, AMegabyteTitleIsPastedAsOneItem) {
    showTitles({"Milk"});
    const QString title = QStringLiteral("word ").repeated(200 * 1000);
    putData(QJsonDocument(QJsonArray{QJsonObject{{"title", title}, {"status", 1}}})
                .toJson(QJsonDocument::Compact));
    focusWithoutEditing();
    list->paste();
    ASSERT_EQ(list->numberOfItems(), 2u);
    EXPECT_EQ(rowAt(1)->title(), title);
    EXPECT_EQ(rowAt(1)->status(), 1u);
}

TEST_F(KRCheckListViewClipboardTests, StrangeCharactersInRecordsArePastedAsTheyAre) {
    showTitles({"Milk"});
    const QString title =
        QStringLiteral("a\u0000b\U0001F95A\u202Eevil\u200F") + QChar(0xD800) + QStringLiteral("z");
    putData(R"([{"title":"a\u0000b\ud83e\udd5a\u202eevil\u200f\ud800z","status":9}])");
    focusWithoutEditing();
    list->paste();
    ASSERT_EQ(list->numberOfItems(), 2u);
    EXPECT_EQ(rowAt(1)->title(), title);
    EXPECT_EQ(rowAt(1)->status(), 9u) << "a status of no meaning is kept and drawn as open";
    KRRunLoop::main().runUntilIdle();
    EXPECT_EQ(list->indexForEditedItem(), 1u);
}

// The system clipboard
// ------------------------------------------------------------------------------------------------------

TEST_F(KRCheckListViewClipboardTests, OnTheSystemClipboardTheItemsTravelUnderTheirMimeNameAndAsPlainText) {
    KRPasteboard::setGeneralPasteboard(nullptr);
    showTitles({"Milk", "Eggs"}, {0, 2});
    selectItems(KRIndexSet{0, 1});
    list->copy();
    const QMimeData* mimeData = QGuiApplication::clipboard()->mimeData();
    ASSERT_NE(mimeData, nullptr);
    EXPECT_EQ(KRPasteboard::mimeTypeForType(KRCheckListItemsAsJSONPasteboardType),
              QStringLiteral("application/x-krchecklist-items+json"));
    EXPECT_EQ(mimeData->data(QStringLiteral("application/x-krchecklist-items+json")),
              list->checkListViewJSONRepresentationOfItemsAtIndexes(KRIndexSet{0, 1}));
    EXPECT_EQ(mimeData->text(), QStringLiteral("- Milk\n+ Eggs\n"));
}

// As another process of the application would leave the clipboard: a new QMimeData, not our own.
TEST_F(KRCheckListViewClipboardTests, ItemsCopiedInAnotherProcessPasteWithTheirStatuses) {
    KRPasteboard::setGeneralPasteboard(nullptr);
    showTitles({"Milk"});
    auto* mimeData = new QMimeData;
    mimeData->setData(
        QStringLiteral("application/x-krchecklist-items+json"),
        R"([{"identifier":"x","status":2,"title":"Tea","frame":"{{0, 0}, {320, 28}}","index":0}])");
    mimeData->setText(QStringLiteral("+ Tea\n"));
    QGuiApplication::clipboard()->setMimeData(mimeData);
    focusWithoutEditing();
    EXPECT_TRUE(list->canPaste());
    list->paste();
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Tea"}));
    EXPECT_EQ(storedStatuses(), (std::vector<KRUInteger>{0, 2})) << "canceled, which the text could not say";
}

TEST_F(KRCheckListViewClipboardTests, TextCopiedInAnotherApplicationPastesAsItems) {
    KRPasteboard::setGeneralPasteboard(nullptr);
    showTitles({"Milk"});
    QGuiApplication::clipboard()->setText(QStringLiteral("Tea\r\n+ Coffee\r\n"));
    focusWithoutEditing();
    EXPECT_TRUE(list->canPaste());
    list->paste();
    EXPECT_EQ(linesOf(storedTitles()), linesOf(QStringList{"Milk", "Tea\r", "Coffee"}));
    EXPECT_EQ(storedStatuses(), (std::vector<KRUInteger>{0, 0, 1}));
}

// Round trips and random input
// ------------------------------------------------------------------------------------------------------

namespace {

// Characters titles are made of: letters, markers and spaces inside, tabs and carriage returns inside,
// combining marks, right-to-left letters and characters outside the basic plane.
const QStringList& titleCharacters() {
    static const QStringList characters{
        "a",      "b",      "Z",       "0",      "-",      "+",      "*",          " ",          "\t",
        "\r",     "\u00E9", "e\u0301", "\u05D0", "\u0627", "\u4E2D", "\U0001F95A", "\U0001D11E", "\u00A0",
        "\u200B", "\"",     "\\",      "/",      "{",      "}",      "%1"};
    return characters;
}

// A title the text form keeps: no line feed, and nothing the per-line trim would take at either end.
QString randomTitle(std::mt19937& random) {
    const QStringList& characters = titleCharacters();
    std::uniform_int_distribution<int> length(0, 12);
    std::uniform_int_distribution<qsizetype> pick(0, characters.size() - 1);
    QString title;
    const int count = length(random);
    for (int index = 0; index < count; ++index) {
        title += characters.at(pick(random));
    }
    const auto isEdge = [](QChar character) {
        return character == u' ' || character == u'\t' || character == u'\r' || character == QChar(0x00A0);
    };
    while (!title.isEmpty() && isEdge(title.front())) {
        title.remove(0, 1);
    }
    while (!title.isEmpty() && isEdge(title.back())) {
        title.chop(1);
    }
    return title;
}

} // namespace

TEST_F(KRCheckListViewClipboardTests, TwoHundredRandomItemsRoundTripThroughBothForms) {
    std::mt19937 random(4242);
    std::uniform_int_distribution<KRUInteger> status(0, 2);
    QStringList titles;
    std::vector<KRUInteger> statuses;
    for (int index = 0; index < 200; ++index) {
        titles << randomTitle(random);
        statuses.push_back(status(random));
    }
    showTitles(titles, statuses);
    selectItems(allIndexes());
    list->copy();
    const QByteArray data = *pasteboard->dataForType(KRCheckListItemsAsJSONPasteboardType);
    const QString text = *pasteboard->stringForType(KRPasteboardTypeString);

    // The records keep every title and status.
    std::vector<Record> expected;
    for (qsizetype index = 0; index < titles.size(); ++index) {
        expected.push_back(Record{titles.at(index), statuses[static_cast<std::size_t>(index)]});
    }
    EXPECT_EQ(read(data), expected);
    // The text keeps every title; canceled comes back completed.
    std::vector<Record> expectedFromText = expected;
    for (Record& record : expectedFromText) {
        record.status = record.status == 0 ? 0 : 1;
    }
    EXPECT_EQ(parsed(text), expectedFromText);

    // Pasted over the whole selection, the records give the same items back.
    list->paste();
    KRRunLoop::main().runOneTurn();
    EXPECT_EQ(linesOf(storedTitles()), linesOf(titles));
    EXPECT_EQ(storedStatuses(), statuses);
    EXPECT_EQ(linesOf(rowTitles()), linesOf(titles));
    EXPECT_EQ(rowStatuses(), statuses);

    // And so does the text alone, but for canceled items.
    putText(text);
    selectItems(allIndexes());
    list->paste();
    KRRunLoop::main().runOneTurn();
    EXPECT_EQ(linesOf(storedTitles()), linesOf(titles));
    std::vector<KRUInteger> statusesFromText;
    for (const Record& record : expectedFromText) {
        statusesFromText.push_back(record.status);
    }
    EXPECT_EQ(rowStatuses(), statusesFromText);
}

namespace {

// Whole pieces of JSON, broken ones among them, for random data.
const std::vector<QByteArray>& jsonPieces() {
    static const std::vector<QByteArray> pieces{"[",
                                                "]",
                                                "{",
                                                "}",
                                                ",",
                                                ":",
                                                " ",
                                                "\"title\"",
                                                "\"status\"",
                                                "\"index\"",
                                                "\"Milk\"",
                                                "\"\"",
                                                "0",
                                                "1",
                                                "2",
                                                "-1",
                                                "0.5",
                                                "1e400",
                                                "-0",
                                                "9007199254740993",
                                                "null",
                                                "true",
                                                "false",
                                                "\"\\u",
                                                "\"\\ud800\"",
                                                "\"\\n\"",
                                                "\xFF",
                                                "\xC3\xA9",
                                                "\"",
                                                "\\",
                                                R"({"title":"a","status":1})",
                                                R"({"status":2})",
                                                "{}"};
    return pieces;
}

QByteArray randomRecordValue(std::mt19937& random) {
    static const std::vector<QByteArray> values{
        "\"Milk\"", "\"\"", "0",    "1",  "2",  "7",     "-1",   "1.5",
        "2.0",      "null", "true", "[]", "{}", "\"1\"", "1e20", "\"\\ud83e\\udd5a\""};
    return values.at(std::uniform_int_distribution<std::size_t>(0, values.size() - 1)(random));
}

// Random data under the private type: arrays of records with values of every type, random pieces, or a
// good document with some bytes changed.
QByteArray randomData(std::mt19937& random) {
    std::uniform_int_distribution<int> kind(0, 2);
    std::uniform_int_distribution<int> count(0, 6);
    QByteArray data;
    switch (kind(random)) {
    case 0: {
        data = "[";
        const int records = count(random);
        for (int index = 0; index < records; ++index) {
            data += index == 0 ? "{" : ",{";
            bool first = true;
            for (const char* key : {"title", "status", "identifier"}) {
                if (std::uniform_int_distribution<int>(0, 3)(random) == 0) {
                    continue;
                }
                data += first ? "" : ",";
                data += QByteArray("\"") + key + "\":" + randomRecordValue(random);
                first = false;
            }
            data += "}";
        }
        data += "]";
        break;
    }
    case 1: {
        const int pieces = count(random) * 3;
        for (int index = 0; index < pieces; ++index) {
            data += jsonPieces().at(
                std::uniform_int_distribution<std::size_t>(0, jsonPieces().size() - 1)(random));
        }
        break;
    }
    default: {
        data = R"([{"title":"Milk","status":1},{"title":"Eggs","status":0,"identifier":"x"}])";
        const int changes = count(random) + 1;
        for (int index = 0; index < changes; ++index) {
            const auto at = std::uniform_int_distribution<qsizetype>(0, data.size() - 1)(random);
            data[at] = static_cast<char>(std::uniform_int_distribution<int>(0, 255)(random));
        }
        break;
    }
    }
    return data;
}

// Random text: markers, every kind of space and line end, marks, right-to-left letters, surrogates (lone
// ones too).
QString randomText(std::mt19937& random) {
    static const QStringList pieces{"a",      "Milk",   "-",    "+",      " ",         "\t",     "\n",
                                    "\n",     "\r",     "\r\n", "\u00A0", "\u3000",    "\u2028", "\u0085",
                                    "\u0301", "\u05D0", "\v",   "*",      "\U0001F95A"};
    std::uniform_int_distribution<int> length(0, 24);
    std::uniform_int_distribution<qsizetype> pick(0, pieces.size());
    QString text;
    const int count = length(random);
    for (int index = 0; index < count; ++index) {
        const qsizetype piece = pick(random);
        text += piece == pieces.size() ? QString(QChar(0xD83E)) : pieces.at(piece);
    }
    return text;
}

// The edited title is the editor's text, which shows line and paragraph separators and carriage returns as
// line feeds, and a surrogate without its other half as U+FFFD.
QStringList asEditorShows(QStringList titles) {
    for (QString& title : titles) {
        title.replace(QChar::LineSeparator, u'\n')
            .replace(QChar::ParagraphSeparator, u'\n')
            .replace(u'\r', u'\n');
        for (qsizetype index = 0; index < title.size(); ++index) {
            if (title.at(index).isHighSurrogate() && index + 1 < title.size() &&
                title.at(index + 1).isLowSurrogate()) {
                ++index;
            } else if (title.at(index).isSurrogate()) {
                title[index] = QChar(QChar::ReplacementCharacter);
            }
        }
    }
    return titles;
}

bool isSpaceOrTab(QChar character) {
    return character == u'\t' || character.category() == QChar::Separator_Space;
}

} // namespace

TEST_F(KRCheckListViewClipboardTests, RandomInputGivesTheReadersOnlyWellFormedRecords) {
    std::mt19937 random(977);
    const int inputs = 100000;
    int accepted = 0;
    for (int input = 0; input < inputs; ++input) {
        const QByteArray data = randomData(random);
        if (const std::optional<QJsonArray> records =
                KRCheckListView::checkListViewItemsAsJSONByReadingData(data)) {
            ++accepted;
            for (const QJsonValue& value : *records) {
                ASSERT_TRUE(value.isObject()) << data.toStdString();
                const QJsonObject record = value.toObject();
                ASSERT_EQ(record.keys(), (QStringList{"status", "title"})) << data.toStdString();
                ASSERT_TRUE(record.value("title").isString()) << data.toStdString();
                ASSERT_GE(record.value("status").toInteger(-1), 0) << data.toStdString();
            }
            // What was read reads again as itself.
            ASSERT_EQ(
                KRCheckListView::checkListViewItemsAsJSONByReadingData(QJsonDocument(*records).toJson()),
                records);
        }

        const QString text = randomText(random);
        const QJsonArray records = KRCheckListView::checkListViewItemsAsJSONByParsingItemsAsString(text);
        const QStringList lines = text.trimmed().split(u'\n');
        ASSERT_EQ(records.size(), lines.size());
        for (qsizetype index = 0; index < records.size(); ++index) {
            const QString title = records.at(index).toObject().value("title").toString();
            const qint64 status = records.at(index).toObject().value("status").toInteger(-1);
            ASSERT_FALSE(title.contains(u'\n'));
            ASSERT_TRUE(title.isEmpty() || (!isSpaceOrTab(title.front()) && !isSpaceOrTab(title.back())));
            qsizetype first = 0;
            while (first < lines.at(index).size() && isSpaceOrTab(lines.at(index).at(first))) {
                ++first;
            }
            const bool plus = first < lines.at(index).size() && lines.at(index).at(first) == u'+';
            ASSERT_EQ(status, plus ? 1 : 0);
            ASSERT_TRUE(lines.at(index).contains(title));
        }
    }
    EXPECT_GT(accepted, inputs / 20) << "the random data reaches the records, not only the parse errors";
    EXPECT_LT(accepted, inputs) << "and the rejections";
}

TEST_F(KRCheckListViewClipboardTests, RandomPastesKeepTheListAndItsDataSourceInStep) {
    std::mt19937 random(31337);
    const int pastes = 2000;
    auto handler = std::make_shared<RecordingAssertionHandler>();
    for (int paste = 0; paste < pastes; ++paste) {
        const KRUInteger count = 6;
        std::vector<KRUInteger> statuses;
        QStringList titles;
        for (KRUInteger index = 0; index < count; ++index) {
            statuses.push_back(std::uniform_int_distribution<KRUInteger>(0, 2)(random));
            titles << (std::uniform_int_distribution<int>(0, 3)(random) == 0
                           ? QString()
                           : randomText(random).remove(u'\n'));
        }
        showTitles(titles, statuses);

        // Nothing, an edit or a selection.
        KRUInteger edited = KRNotFound;
        KRIndexSet selected;
        switch (std::uniform_int_distribution<int>(0, 2)(random)) {
        case 0:
            focusWithoutEditing();
            break;
        case 1:
            edited = std::uniform_int_distribution<KRUInteger>(0, count - 1)(random);
            editItem(edited, KRMakeRange(0, 0));
            break;
        default: {
            KRMutableIndexSet indexes;
            for (KRUInteger index = 0; index < count; ++index) {
                if (std::uniform_int_distribution<int>(0, 2)(random) == 0) {
                    indexes.addIndex(index);
                }
            }
            selected = indexes;
            if (selected.isEmpty()) {
                focusWithoutEditing();
            } else {
                selectItems(selected);
            }
            break;
        }
        }

        const QByteArray data = randomData(random);
        const QString text = randomText(random);
        putData(data, text);
        KRAssertionHandler::setCurrentHandler(handler);
        // Focusing may itself begin an edit; what counts is the state the paste finds.
        edited = list->indexForEditedItem();
        selected = list->indexesForSelectedItems();
        const bool editedIsEmpty = edited != KRNotFound && rowAt(edited)->title().isEmpty();
        list->paste();
        KRRunLoop::main().runUntilIdle();
        KRAssertionHandler::setCurrentHandler(nullptr);

        std::optional<QJsonArray> records = KRCheckListView::checkListViewItemsAsJSONByReadingData(data);
        const bool typed = !records && edited != KRNotFound && !text.contains(u'\n');
        if (!records && !typed) {
            records = KRCheckListView::checkListViewItemsAsJSONByParsingItemsAsString(text);
        }
        KRUInteger expectedCount = count;
        if (records && !records->isEmpty()) {
            expectedCount +=
                static_cast<KRUInteger>(records->size()) - selected.count() - (editedIsEmpty ? 1 : 0);
        }
        ASSERT_EQ(list->numberOfItems(), expectedCount)
            << "paste " << paste << " edited " << edited << " selected "
            << selected.description().toStdString() << " records " << (records ? records->size() : -1)
            << " text " << text.toStdString() << "\n"
            << linesOf(log->messages()).lines.join("\n").toStdString();
        ASSERT_EQ(groupingDataSource->items.size(), expectedCount);
        ASSERT_EQ(linesOf(asEditorShows(rowTitles())), linesOf(asEditorShows(storedTitles())));
        ASSERT_EQ(rowStatuses(), storedStatuses());
        ASSERT_TRUE(selectionIsWithinTheItems());
        if (records && !records->isEmpty()) {
            ASSERT_TRUE(list->indexesForSelectedItems().isEmpty());
            ASSERT_NE(list->indexForEditedItem(), KRNotFound);
        }
        ASSERT_EQ(log->count(QStringLiteral("beginGrouping")), log->count(QStringLiteral("endGrouping")));
    }
    EXPECT_TRUE(handler->failures.isEmpty()) << "every paste had text";
}

TEST_F(KRCheckListViewClipboardTests, ADataSourceThatReportsNoInsertsLeavesTheOtherRowsAlone) {
    showTitles({"Milk", "Eggs", "Bread"});
    putText(QStringLiteral("Tea\nCoffee"));
    selectItems(KRIndexSet{0});
    groupingDataSource->appliesChanges = false;
    groupingDataSource->reportsChanges = false;
    groupingDataSource->titleValidator = [](const QString& title, KRUInteger) { return title; };
    groupingDataSource->statusValidator = [](KRUInteger status, KRUInteger) { return status; };
    list->paste();
    EXPECT_EQ(linesOf(log->startingWith({"insertItemsAtIndexes", "removeItemsAtIndexes"})),
              linesOf(QStringList{"insertItemsAtIndexes {1}", "insertItemsAtIndexes {2}",
                                  "removeItemsAtIndexes {0}"}));
    EXPECT_EQ(linesOf(rowTitles()), linesOf(QStringList{"Milk", "Eggs", "Bread"}));
    KRRunLoop::main().runUntilIdle();
    EXPECT_EQ(list->indexForEditedItem(), 2u) << "with no pasted row, the last item";
}
