#include "Text/KRTextLayout.h"

#include "Text/KRTextField.h"
#include "Text/KRTextView.h"
#include "Views/KRView.h"
#include "Views/KRWindow.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

constexpr double kLineHeight = 18.0;
constexpr double kUnbounded = 99999999.0;

QFont titleFont() {
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(13);
    return font;
}

KRTextAttributes titleAttributes(double lineHeight = kLineHeight) {
    KRTextAttributes attributes;
    attributes.font = titleFont();
    attributes.foregroundColor = QColor(0x25, 0x27, 0x2C);
    attributes.strikethroughStyle = 0;
    if (lineHeight > 0.0) {
        attributes.paragraphStyle = KRParagraphStyle{lineHeight, lineHeight};
    }
    return attributes;
}

// Titles a to-do list meets: plain, wrapped, punctuated, emoji, combining marks, CJK, right-to-left, mixed
// direction, unbreakable runs, odd spacing and explicit line breaks.
const std::vector<QString>& sampleTitles() {
    static const std::vector<QString> titles = {
        QString(),
        QStringLiteral("Buy milk"),
        QStringLiteral("Call the plumber about the leaking kitchen tap before Friday"),
        QStringLiteral("Renew passport"),
        QStringLiteral("Book flights to Lisbon, hotel near Alfama, and a table at the fado place"),
        QStringLiteral("Email: tell Sam the report (v2.3) is ready; ask about Q3 numbers!"),
        QStringLiteral("x"),
        QStringLiteral("    leading spaces"),
        QStringLiteral("trailing spaces      "),
        QStringLiteral("double  spaced  words  across  the  whole  line  of  this  title"),
        QStringLiteral("Supercalifragilisticexpialidociousandthensomemoreletterswithoutanyspaceatall"),
        QStringLiteral("https://example.com/a/very/long/path/that/keeps/going/and/going/index.html?q=1"),
        QStringLiteral("1234567890 1234567890 1234567890 1234567890 1234567890 1234567890"),
        QStringLiteral("Party 🎉 with cake 🎂 and balloons 🎈🎈🎈 for everybody in the office"),
        QStringLiteral("👩‍👩‍👧‍👦 family dinner"),
        QStringLiteral("🇵🇹🇪🇸🇫🇷🇩🇪🇮🇹🇬🇧🇺🇸🇯🇵🇰🇷🇨🇳 flags of the trip"),
        QStringLiteral("Cafe\u0301 re\u0301sume\u0301 nai\u0308ve coo\u0308perate"),
        QStringLiteral("Zalgo: Z\u0351\u036b\u0343a\u0310\u0352l\u0304g\u0307o\u0352 text stacking marks"),
        QStringLiteral("日本語のテキストを折り返すかどうかを確かめるための長いタイトルです"),
        QStringLiteral("买牛奶和鸡蛋"),
        QStringLiteral("한국어 할 일 목록 항목이 길어지면 줄이 바뀝니다 정말로 그런지 확인"),
        QStringLiteral("中文, English, 日本語 mixed together in one line that wraps somewhere"),
        QStringLiteral("שלום עולם"),
        QStringLiteral("לקנות חלב ולחם ולהתקשר לאמא לפני סוף השבוע כי היא מחכה"),
        QStringLiteral("مرحبا بالعالم"),
        QStringLiteral("اشتر الحليب والخبز واتصل بأمك قبل نهاية الأسبوع لأنها تنتظر"),
        QStringLiteral("Mixed עברית and English in one title that is long enough to wrap"),
        QStringLiteral("Numbers in Arabic ١٢٣٤ and Hebrew text כאן"),
        QStringLiteral("Ελληνικά: αγόρασε γάλα και ψωμί"),
        QStringLiteral("Русский: купить молоко, хлеб и позвонить маме до выходных"),
        QStringLiteral("ไทย: ซื้อนมและขนมปัง"),
        QStringLiteral("हिन्दी: दूध और रोटी खरीदें"),
        QStringLiteral("Tab\tseparated\tcolumns"),
        QStringLiteral("First paragraph\nSecond paragraph"),
        QStringLiteral("Line one\nline two that is rather longer and will need to wrap at some point\nthree"),
        QStringLiteral("\n"),
        QStringLiteral("ends with newline\n"),
        QStringLiteral("Windows\r\nline ending"),
        QStringLiteral("A-very-long-hyphenated-word-that-can-break-at-its-hyphens-if-needed-here"),
        QStringLiteral("WWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWW"),
        QStringLiteral("iiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiiii"),
        QStringLiteral("Quotes “curly” and ‘single’ — dashes – and … ellipsis"),
        QStringLiteral(
            "Non\u00A0breaking\u00A0spaces\u00A0keep\u00A0these\u00A0words\u00A0together\u00A0always"),
        QStringLiteral("Zero\u200Bwidth\u200Bspaces\u200Ballow\u200Bbreaks\u200Bhere\u200Band\u200Bhere"),
        QStringLiteral("Soft\u00ADhyphen\u00ADated\u00ADwords\u00ADappear\u00ADonly\u00ADat\u00ADbreaks"),
        QStringLiteral("Math: ∑ x² + √y ≤ ∞ and ≠ 0"),
        QStringLiteral("Currency: € 12,50 · £ 9.99 · ¥ 1000 · ₹ 250"),
        QStringLiteral("Pay rent"),
        QStringLiteral("Water the plants on the balcony and in the living room"),
        QStringLiteral("Prepare slides for Monday's all-hands: roadmap, hiring, budget, Q&A"),
        QStringLiteral("Fix bug #4521 — crash when the list is empty and the user presses Return"),
        QStringLiteral("Read \"The Pragmatic Programmer\" chapters 3-5"),
        QStringLiteral("ok"),
    };
    return titles;
}

struct EditorLines {
    double height = 0.0;
    std::vector<KRRange> lines;
};

// The editor's lines, read through its line-fragment query.
EditorLines linesOf(const KRTextView& editor) {
    EditorLines result;
    result.height = editor.usedHeight();
    const KRUInteger length = editor.length();
    KRUInteger index = 0;
    do {
        KRRange range;
        editor.lineFragmentRectForCharacterAtIndex(index, &range);
        if (result.lines.empty() || !(result.lines.back() == range)) {
            result.lines.push_back(range);
        }
        index = std::max(index + 1, KRMaxRange(range));
    } while (index <= length); // the caret position after the last character has a line too
    return result;
}

std::vector<KRRange> linesOf(const KRTextLayout& layout) {
    std::vector<KRRange> lines;
    for (const KRTextLayout::Line& line : layout.lines()) {
        lines.push_back(line.range);
    }
    return lines;
}

QString describe(const QString& title, double width) {
    return QStringLiteral("%1 at width %2").arg(title.left(30)).arg(width);
}

class KRTextLayoutTest : public ::testing::Test {
protected:
    void SetUp() override {
        content = std::make_shared<KRView>(KRRectMake(0, 0, 800, 600));
        window.setContentView(content);
        field = std::make_shared<KRTextField>(KRRectMake(10, 10, 200, 100));
        field->setBordered(false);
        field->setDrawsBackground(false);
        field->setFont(titleFont());
        content->addSubview(field);
    }
    void TearDown() override { window.makeFirstResponder(nullptr); }

    KRWindow window;
    std::shared_ptr<KRView> content;
    std::shared_ptr<KRTextField> field;
};

TEST_F(KRTextLayoutTest, FieldAndItsEditorBreakLinesAndMeasureAlikeForEveryTitle) {
    ASSERT_GE(sampleTitles().size(), 50u);
    const QString ruler = QStringLiteral("Call the plumber about the");
    // Widths of every kind, including just around where a line stops fitting.
    const double rulerWidth = QFontMetricsF(titleFont()).horizontalAdvance(ruler);
    for (const double width : {60.0, 120.0, 203.5, 260.0, rulerWidth - 0.25, rulerWidth, rulerWidth + 0.25}) {
        for (const QString& title : sampleTitles()) {
            const KRAttributedString value(title, titleAttributes());
            field->setFrame(KRRectMake(10, 10, width, 100));
            field->setAttributedStringValue(value);
            const KRSize measured = field->sizeThatFits(KRSizeMake(width, kUnbounded));
            const KRTextLayout layout(value, width, titleFont(), kLineHeight);

            ASSERT_TRUE(window.makeFirstResponder(field.get()));
            KRTextView* editor = field->currentEditor();
            ASSERT_NE(editor, nullptr);
            ASSERT_EQ(editor->frame().size.width, width);
            const EditorLines edited = linesOf(*editor);
            window.makeFirstResponder(nullptr);

            EXPECT_EQ(measured.height, edited.height) << describe(title, width).toStdString();
            EXPECT_EQ(layout.height(), edited.height) << describe(title, width).toStdString();
            if (!title.contains(QLatin1Char('\r'))) { // the editor keeps CR LF as one character
                EXPECT_EQ(linesOf(layout), edited.lines) << describe(title, width).toStdString();
            }
        }
    }
}

TEST_F(KRTextLayoutTest, NaturalLineHeightsAgreeWithTheEditorToo) {
    for (const QString& title : sampleTitles()) {
        const KRAttributedString value(title, titleAttributes(0.0));
        KRTextView editor(KRRectMake(0, 0, 180, 100));
        editor.setDefaultFont(titleFont());
        editor.setAttributedString(value);
        const KRTextLayout layout(value, 180, titleFont(), 0.0);
        EXPECT_EQ(layout.height(), editor.usedHeight()) << title.toStdString();
    }
}

TEST_F(KRTextLayoutTest, SingleLineShortcutAgreesWithTheFullLayout) {
    int answered = 0;
    for (const QString& title : sampleTitles()) {
        const KRAttributedString value(title, titleAttributes());
        for (const double width : {80.0, 150.0, 240.0, 0.0}) {
            const std::optional<KRSize> quick =
                KRTextLayout::measureSingleLine(value, width, titleFont(), kLineHeight);
            if (!quick) {
                continue;
            }
            ++answered;
            const KRTextLayout full(value, width, titleFont(), kLineHeight);
            EXPECT_EQ(full.lines().size(), 1u) << describe(title, width).toStdString();
            EXPECT_EQ(quick->height, full.height()) << describe(title, width).toStdString();
        }
    }
    // The shortcut must actually be taken for ordinary short titles.
    EXPECT_GT(answered, 40);
    EXPECT_FALSE(KRTextLayout::measureSingleLine(KRAttributedString(sampleTitles()[2], titleAttributes()),
                                                 80.0, titleFont(), kLineHeight));
    EXPECT_FALSE(KRTextLayout::measureSingleLine(
        KRAttributedString(QStringLiteral("a\nb"), titleAttributes()), 0.0, titleFont(), kLineHeight));
    // Without a fixed line height the fonts on the line decide its height, so the shortcut stays out.
    EXPECT_FALSE(KRTextLayout::measureSingleLine(
        KRAttributedString(QStringLiteral("ok"), titleAttributes(0.0)), 100.0, titleFont(), 0.0));
}

TEST_F(KRTextLayoutTest, WrappedTitleIsAWholeNumberOfFixedLines) {
    const KRAttributedString value(sampleTitles()[4], titleAttributes());
    const KRTextLayout narrow(value, 120.0, titleFont(), kLineHeight);
    ASSERT_GE(narrow.lines().size(), 3u);
    EXPECT_EQ(narrow.height(), kLineHeight * static_cast<double>(narrow.lines().size()));
    for (std::size_t index = 0; index < narrow.lines().size(); ++index) {
        EXPECT_EQ(narrow.lines()[index].top, kLineHeight * static_cast<double>(index));
        EXPECT_EQ(narrow.lines()[index].height, kLineHeight);
    }
    const KRTextLayout unbroken(value, 0.0, titleFont(), kLineHeight);
    EXPECT_EQ(unbroken.lines().size(), 1u);
    EXPECT_EQ(unbroken.height(), kLineHeight);
    // A huge width stays inside the text engine's range and does not wrap either.
    const KRTextLayout huge(value, kUnbounded, titleFont(), kLineHeight);
    EXPECT_EQ(huge.lines().size(), 1u);
}

TEST_F(KRTextLayoutTest, AnEmptyTitleIsOneLineTall) {
    const KRAttributedString empty(QString(), titleAttributes());
    EXPECT_EQ(KRTextLayout::measure(empty, 100.0, titleFont(), kLineHeight).height, kLineHeight);
    const KRTextLayout layout(empty, 100.0, titleFont(), kLineHeight);
    EXPECT_EQ(layout.lines().size(), 1u);
}

// Editing must not move a pixel: the field's drawing and the editor's drawing of the same title match.
TEST_F(KRTextLayoutTest, FieldDrawsTheTextWhereTheEditorDrawsIt) {
    const std::vector<QString> titles = {sampleTitles()[2], sampleTitles()[13], sampleTitles()[16],
                                         sampleTitles()[23], sampleTitles()[34]};
    for (const QString& title : titles) {
        const KRAttributedString value(title, titleAttributes());
        const auto render = [](const std::function<void(QPainter&)>& draw) {
            QImage image(220, 120, QImage::Format_ARGB32_Premultiplied);
            image.fill(Qt::white);
            QPainter painter(&image);
            draw(painter);
            return image;
        };
        field->setFrame(KRRectMake(0, 0, 200, 100));
        field->setAttributedStringValue(value);
        const QImage drawnByField =
            render([this](QPainter& painter) { field->draw(painter, field->bounds()); });
        KRTextView editor(KRRectMake(0, 0, 200, 100));
        editor.setDefaultFont(titleFont());
        editor.setTextColor(QColor(0x25, 0x27, 0x2C));
        editor.setAttributedString(value);
        const QImage drawnByEditor =
            render([&editor](QPainter& painter) { editor.draw(painter, editor.bounds()); });
        QImage blank(drawnByField.size(), drawnByField.format());
        blank.fill(Qt::white);
        ASSERT_NE(drawnByField, blank) << "the field drew the title";
        EXPECT_EQ(drawnByField, drawnByEditor) << title.toStdString();
    }
}

} // namespace
