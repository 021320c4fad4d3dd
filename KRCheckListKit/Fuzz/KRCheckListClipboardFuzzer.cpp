// Feeds each input to both readers of pasted items, as the records of the private type and as plain text
// (read as UTF-8, as the pasteboard reads it), and stops at the first record that breaks their promises.
#include "KRCheckListView.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <cstddef>
#include <cstdint>

namespace {

// Spaces and tabs, the set each line of text is trimmed of.
bool isSpaceOrTab(QChar character) {
    return character == u'\t' || character.category() == QChar::Separator_Space;
}

void require(bool condition) {
    if (!condition) {
        __builtin_trap();
    }
}

// Read records are {title: string, status: non-negative integer} and read again as themselves.
void checkReadingData(const QByteArray& data) {
    const std::optional<QJsonArray> records = KRCheckListView::checkListViewItemsAsJSONByReadingData(data);
    if (!records) {
        return;
    }
    for (const QJsonValue& value : *records) {
        require(value.isObject());
        const QJsonObject record = value.toObject();
        require(record.size() == 2);
        require(record.value(QStringLiteral("title")).isString());
        require(record.value(QStringLiteral("status")).toInteger(-1) >= 0);
    }
    require(KRCheckListView::checkListViewItemsAsJSONByReadingData(QJsonDocument(*records).toJson()) ==
            records);
}

// One record per line of the trimmed text, its title trimmed, its status 1 exactly for a "+" marker.
void checkParsingText(const QString& text) {
    const QJsonArray records = KRCheckListView::checkListViewItemsAsJSONByParsingItemsAsString(text);
    const QStringList lines = text.trimmed().split(u'\n');
    require(records.size() == lines.size());
    for (qsizetype index = 0; index < records.size(); ++index) {
        const QJsonObject record = records.at(index).toObject();
        const QString title = record.value(QStringLiteral("title")).toString();
        const qint64 status = record.value(QStringLiteral("status")).toInteger(-1);
        const QString& line = lines.at(index);
        require(!title.contains(u'\n'));
        require(title.isEmpty() || (!isSpaceOrTab(title.front()) && !isSpaceOrTab(title.back())));
        require(line.contains(title));
        qsizetype first = 0;
        while (first < line.size() && isSpaceOrTab(line.at(first))) {
            ++first;
        }
        require(status == (first < line.size() && line.at(first) == u'+' ? 1 : 0));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const QByteArray data(reinterpret_cast<const char*>(bytes), static_cast<qsizetype>(size));
    checkReadingData(data);
    checkParsingText(QString::fromUtf8(data));
    return 0;
}
