#include "Text/KRTextLayout.h"

#include "Controls/KRDefaults.h"
#include "Text/KRTextField.h"
#include "Text/KRTextView.h"
#include "Text/KRWordAdvanceCache.h"
#include "Views/KRView.h"
#include "Views/KRWindow.h"

#include <QImage>
#include <QPainter>
#include <QTextLayout>

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <utility>
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

// Word by word
// ------------------------------------------------------------------------------------------------------

constexpr int kCheckListTitlePointSize = 14;
constexpr int kLargeTitlePixelSize = 17;
constexpr double kWordWidth = 1000.0;     // wide enough for any short text on one line
constexpr double kEveryBreakWidth = 0.5;  // so narrow that a line ends at every break opportunity
constexpr double kListTitleWidth = 300.0; // a title's width in a list
constexpr double kOddLineHeight = 17.3;   // not a whole number of the layout's 1/64 steps
constexpr double kNearTheEdge = KRTextLayout::kWordFitSlack / 2;    // inside the slack, either way
constexpr double kClearOfTheEdge = KRTextLayout::kWordFitSlack * 2; // outside it
constexpr unsigned kPropertySeed = 20240611;

// The fonts titles are measured in: the tests' title font, the check list's and a larger bold one.
std::vector<QFont> measuredFonts() {
    QFont bold(QStringLiteral("DejaVu Sans"));
    bold.setPixelSize(kLargeTitlePixelSize);
    bold.setBold(true);
    return {titleFont(), KRDefaults::regularFontOfSize(kCheckListTitlePointSize), bold};
}

KRAttributedString titleInFont(const QString& title, const QFont& font, double lineHeight = kLineHeight) {
    KRTextAttributes attributes = titleAttributes(lineHeight);
    attributes.font = font;
    return KRAttributedString(title, attributes);
}

std::optional<KRSize> byWords(const QString& title, double width, const QFont& font = titleFont()) {
    return KRTextLayout::measureWordByWord(titleInFont(title, font), width, font, kLineHeight);
}

// Where Qt's line breaker lets lines start, read from a layout that breaks at every chance it gets.
std::vector<int> breakOpportunities(const QString& text, const QFont& font) {
    QTextLayout layout(text, font);
    QTextOption option;
    option.setWrapMode(QTextOption::WordWrap);
    layout.setTextOption(option);
    std::vector<int> starts;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(kEveryBreakWidth);
        starts.push_back(line.textStart());
    }
    layout.endLayout();
    return starts;
}

// The start of every word in text made of words and single spaces.
std::vector<int> wordStarts(const QString& text) {
    std::vector<int> starts = {0};
    for (int index = 0; index < text.size(); ++index) {
        if (text[index] == QLatin1Char(' ') && index + 1 < text.size()) {
            starts.push_back(index + 1);
        }
    }
    return starts;
}

// Every string of up to length characters drawn from alphabet.
std::vector<QString> everyWord(const QString& alphabet, int length) {
    std::vector<QString> words;
    std::vector<QString> previous = {QString()};
    for (int size = 1; size <= length; ++size) {
        std::vector<QString> next;
        for (const QString& stem : previous) {
            for (const QChar character : alphabet) {
                next.push_back(stem + character);
            }
        }
        words.insert(words.end(), next.begin(), next.end());
        previous = std::move(next);
    }
    return words;
}

// The words benchmark titles are made of.
const QStringList& listWords() {
    static const QStringList words = {
        QStringLiteral("buy"),      QStringLiteral("milk"),    QStringLiteral("call"),
        QStringLiteral("the"),      QStringLiteral("plumber"), QStringLiteral("renew"),
        QStringLiteral("passport"), QStringLiteral("book"),    QStringLiteral("flights"),
        QStringLiteral("Lisbon"),   QStringLiteral("report"),  QStringLiteral("review"),
        QStringLiteral("budget"),   QStringLiteral("and"),     QStringLiteral("before"),
        QStringLiteral("Friday"),   QStringLiteral("email"),   QStringLiteral("Sam"),
        QStringLiteral("about"),    QStringLiteral("slides")};
    return words;
}

// Titles as a list holds them: seven in ten a few words, the rest two or three lines at list widths.
std::vector<QString> listTitles(int count, std::mt19937& random) {
    std::vector<QString> titles;
    for (int index = 0; index < count; ++index) {
        const bool wrapped = random() % 10 >= 7;
        const unsigned wordCount = wrapped ? 14 + random() % 14 : 2 + random() % 4;
        QStringList title;
        for (unsigned word = 0; word < wordCount; ++word) {
            title << listWords()[static_cast<qsizetype>(random() % listWords().size())];
        }
        titles.push_back(title.join(QLatin1Char(' ')));
    }
    return titles;
}

QString randomString(std::mt19937& random, const QString& alphabet, unsigned minimum, unsigned maximum) {
    QString word;
    const unsigned length = minimum + random() % (maximum - minimum + 1);
    for (unsigned index = 0; index < length; ++index) {
        word += alphabet[static_cast<qsizetype>(random() % alphabet.size())];
    }
    return word;
}

// Words of every shape the shortcut may meet: plain, capitalised, numbers with separators, wrapped in
// brackets and quotes, followed by punctuation, long ones, and any mix of the characters it knows.
std::vector<QString> randomVocabulary(std::mt19937& random) {
    const QString lower = QStringLiteral("abcdefghijklmnopqrstuvwxyz");
    const QString upper = QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZ");
    const QString digits = QStringLiteral("0123456789");
    const QString punctuation = QStringLiteral(".,;:!?'\"()");
    const QStringList openings = {QStringLiteral("("), QStringLiteral("'"), QStringLiteral("\""),
                                  QStringLiteral("(\"")};
    const QStringList closings = {QStringLiteral("."),  QStringLiteral(","),  QStringLiteral(";"),
                                  QStringLiteral(":"),  QStringLiteral("!"),  QStringLiteral("?"),
                                  QStringLiteral(")"),  QStringLiteral("'"),  QStringLiteral("\""),
                                  QStringLiteral(")."), QStringLiteral("?!"), QStringLiteral(".\""),
                                  QStringLiteral("'s"), QStringLiteral("...")};
    constexpr int kVocabularySize = 600;
    std::vector<QString> words;
    for (int index = 0; index < kVocabularySize; ++index) {
        QString word;
        switch (random() % 11) {
        case 0:
        case 1:
        case 2:
            word = randomString(random, lower, 1, 10);
            break;
        case 3:
            word = randomString(random, upper, 1, 1) + randomString(random, lower, 1, 9);
            break;
        case 4:
            word = randomString(random, upper + digits, 2, 6);
            break;
        case 5: {
            const QStringList separators = {QStringLiteral("."), QStringLiteral(","), QStringLiteral(":"),
                                            QStringLiteral(";")};
            word = randomString(random, digits, 1, 4) + separators[random() % separators.size()] +
                   randomString(random, digits, 1, 3);
            break;
        }
        case 6:
            word = openings[random() % openings.size()] + randomString(random, lower, 1, 8) +
                   closings[random() % closings.size()];
            break;
        case 7:
            word = randomString(random, lower + upper, 1, 8) + closings[random() % closings.size()];
            break;
        case 8:
            word = randomString(random, lower, 14, 30);
            break;
        case 9: {
            // Letters the font joins into one glyph, inside a word or at its end.
            const QStringList joined = {QStringLiteral("f"),  QStringLiteral("ff"),  QStringLiteral("fi"),
                                        QStringLiteral("fl"), QStringLiteral("ffi"), QStringLiteral("ffl")};
            word = randomString(random, lower, 1, 5) + joined[random() % joined.size()] +
                   (random() % 2 == 0 ? QString() : randomString(random, lower, 1, 4));
            break;
        }
        default:
            word = randomString(random, lower + upper + digits + punctuation, 1, 8);
            break;
        }
        words.push_back(word);
    }
    return words;
}

std::vector<QString> randomTitles(int count, std::mt19937& random) {
    const std::vector<QString> vocabulary = randomVocabulary(random);
    std::vector<QString> titles;
    for (int index = 0; index < count; ++index) {
        const unsigned wordCount = random() % 10 >= 7 ? 8 + random() % 24 : 1 + random() % 6;
        QStringList words;
        for (unsigned word = 0; word < wordCount; ++word) {
            words << (random() % 2 == 0 ? listWords()[random() % listWords().size()]
                                        : vocabulary[random() % vocabulary.size()]);
        }
        QString title = words.join(QLatin1Char(' '));
        if (random() % 10 == 0) {
            title += QString(static_cast<qsizetype>(1 + random() % 3), QLatin1Char(' '));
        }
        titles.push_back(title);
    }
    return titles;
}

TEST_F(KRTextLayoutTest, WordByWordAgreesWithTheFullLayoutForRandomTitles) {
    constexpr int kTitleCount = 3000;
    constexpr int kNarrowest = 40;
    constexpr int kWidest = 600;
    constexpr int kWidthStep = 19;
    constexpr int kQuarters = 4;
    std::mt19937 random(kPropertySeed);
    const std::vector<QString> titles = randomTitles(kTitleCount, random);
    for (const QFont& font : measuredFonts()) {
        KRWordAdvanceCache::clearShared();
        int asked = 0;
        int answered = 0;
        int wrapped = 0;
        int mismatches = 0;
        for (std::size_t index = 0; index < titles.size(); ++index) {
            const KRAttributedString value = titleInFont(titles[index], font);
            for (int step = kNarrowest; step <= kWidest; step += kWidthStep) {
                // Whole and fractional widths alike.
                const double width = step + static_cast<double>(index % kQuarters) / kQuarters;
                ++asked;
                const std::optional<KRSize> quick =
                    KRTextLayout::measureWordByWord(value, width, font, kLineHeight);
                if (!quick) {
                    continue;
                }
                ++answered;
                const KRTextLayout full(value, width, font, kLineHeight);
                wrapped += full.lines().size() > 1 ? 1 : 0;
                if (quick->width != width || quick->height != full.height()) {
                    ++mismatches;
                    ADD_FAILURE() << describe(titles[index], width).toStdString() << " in "
                                  << font.toString().toStdString() << ": " << quick->height << " against "
                                  << full.height();
                }
                ASSERT_LT(mismatches, 10) << "stopping after this many differences";
            }
        }
        // The comparison means something only if the shortcut answers most of the time, wrapped text
        // included; narrow widths and the odder words leave the rest to the full layout.
        EXPECT_GT(answered, asked / 2) << font.toString().toStdString();
        EXPECT_GT(wrapped, answered / 4) << font.toString().toStdString();
    }
}

TEST_F(KRTextLayoutTest, WordByWordAnswersOrdinaryTitles) {
    constexpr int kTitleCount = 1000;
    constexpr double kMostTitles = 0.9;
    std::mt19937 random(kPropertySeed);
    const std::vector<QString> titles = listTitles(kTitleCount, random);
    for (const QFont& font : measuredFonts()) {
        KRWordAdvanceCache::clearShared();
        int answered = 0;
        for (const QString& title : titles) {
            const KRAttributedString value = titleInFont(title, font);
            const std::optional<KRSize> quick =
                KRTextLayout::measureWordByWord(value, kListTitleWidth, font, kLineHeight);
            answered += quick ? 1 : 0;
            const KRTextLayout full(value, kListTitleWidth, font, kLineHeight);
            const KRSize measured = KRTextLayout::measure(value, kListTitleWidth, font, kLineHeight);
            EXPECT_EQ(measured.width, kListTitleWidth) << title.toStdString();
            EXPECT_EQ(measured.height, full.height()) << title.toStdString();
        }
        EXPECT_GT(answered, static_cast<int>(kMostTitles * kTitleCount)) << font.toString().toStdString();
        // The titles' words are all the shortcut needed to learn.
        EXPECT_EQ(KRWordAdvanceCache::shared().wordCount(), static_cast<std::size_t>(listWords().size()));
    }
}

TEST_F(KRTextLayoutTest, WordByWordKeepsTheFixedPointHeightsOfTheFullLayout) {
    const QString title = sampleTitles()[4];
    const KRAttributedString value = titleInFont(title, titleFont(), kOddLineHeight);
    const std::optional<KRSize> quick =
        KRTextLayout::measureWordByWord(value, kListTitleWidth / 2, titleFont(), kOddLineHeight);
    ASSERT_TRUE(quick);
    const KRTextLayout full(value, kListTitleWidth / 2, titleFont(), kOddLineHeight);
    ASSERT_GT(full.lines().size(), 1u);
    EXPECT_EQ(quick->height, full.height());
    EXPECT_NE(quick->height, kOddLineHeight * static_cast<double>(full.lines().size()));
}

TEST_F(KRTextLayoutTest, WordByWordDeclinesTextItCannotMeasureWordByWord) {
    const double width = kListTitleWidth;
    ASSERT_TRUE(byWords(QStringLiteral("Email Sam: the report (v2.3) is ready; call at 10:30!"), width));
    ASSERT_TRUE(byWords(QStringLiteral("Read \"The Pragmatic Programmer\" chapters 3, 4 and 5?!"), width));
    ASSERT_TRUE(byWords(QStringLiteral("trailing spaces hang   "), width));
    ASSERT_TRUE(byWords(QString(), width));
    EXPECT_FALSE(byWords(QStringLiteral("well-known plan"), width));
    EXPECT_FALSE(byWords(QStringLiteral("either/or"), width));
    EXPECT_FALSE(byWords(QStringLiteral("Tab\tseparated"), width));
    EXPECT_FALSE(byWords(QStringLiteral("two\nparagraphs"), width));
    EXPECT_FALSE(byWords(QStringLiteral("carriage\rreturn"), width));
    EXPECT_FALSE(byWords(QStringLiteral("Caf\u00e9 au lait"), width));
    EXPECT_FALSE(byWords(QStringLiteral("no\u00A0break"), width));
    EXPECT_FALSE(byWords(QStringLiteral("buy  milk"), width));
    EXPECT_FALSE(byWords(QStringLiteral(" buy milk"), width));
    EXPECT_FALSE(byWords(QStringLiteral("   "), width));
    EXPECT_FALSE(byWords(QStringLiteral("50% off"), width));
    // Places inside a word where Qt would break a line.
    EXPECT_FALSE(byWords(QStringLiteral("wow!great"), width));
    EXPECT_FALSE(byWords(QStringLiteral("why?4"), width));
    EXPECT_FALSE(byWords(QStringLiteral("see.1"), width));
    EXPECT_FALSE(byWords(QStringLiteral("end.(aside)"), width));
    EXPECT_FALSE(byWords(QStringLiteral("(one)(two)"), width));
    // A word ending in a ligature, whose overhang the font's metrics cannot tell.
    EXPECT_FALSE(byWords(QStringLiteral("drop off"), width));
    EXPECT_FALSE(byWords(QStringLiteral("fix wifi now"), width));
    EXPECT_TRUE(byWords(QStringLiteral("office waffles"), width));
    // A word wider than the line is broken inside it.
    EXPECT_FALSE(byWords(QStringLiteral("Supercalifragilistic"), 60.0));
    EXPECT_FALSE(byWords(QStringLiteral("buy Supercalifragilistic"), 60.0));

    const KRAttributedString plain(QStringLiteral("buy milk"), titleAttributes());
    EXPECT_FALSE(KRTextLayout::measureWordByWord(plain, 0.0, titleFont(), kLineHeight));
    EXPECT_FALSE(KRTextLayout::measureWordByWord(plain, kUnbounded, titleFont(), kLineHeight));
    EXPECT_FALSE(KRTextLayout::measureWordByWord(
        KRAttributedString(QStringLiteral("buy milk"), titleAttributes(0.0)), width, titleFont(), 0.0));
    KRAttributedString mixed(QStringLiteral("buy milk"), titleAttributes());
    KRTextAttributes bold = titleAttributes();
    QFont boldFont = titleFont();
    boldFont.setBold(true);
    bold.font = boldFont;
    mixed.setAttributes(bold, KRMakeRange(0, 3));
    ASSERT_FALSE(mixed.hasUniformAttributes());
    EXPECT_FALSE(KRTextLayout::measureWordByWord(mixed, width, titleFont(), kLineHeight));
    QFont spaced = titleFont();
    spaced.setLetterSpacing(QFont::AbsoluteSpacing, 1.0);
    EXPECT_FALSE(byWords(QStringLiteral("buy milk"), width, spaced));
}

TEST_F(KRTextLayoutTest, WordByWordLeavesLinesEndingNearTheEdgeToTheFullLayout) {
    const QFontMetricsF metrics(titleFont());
    // Lines ending near the width, with and without a last letter that overhangs its advance.
    for (const QString& title : {QStringLiteral("hello world"), QStringLiteral("call the plumber")}) {
        const double advance = metrics.horizontalAdvance(title);
        const double reach = advance + std::max(0.0, -metrics.rightBearing(title.back()));
        EXPECT_FALSE(byWords(title, reach)) << title.toStdString();
        EXPECT_FALSE(byWords(title, reach + kNearTheEdge)) << title.toStdString();
        EXPECT_FALSE(byWords(title, reach - kNearTheEdge)) << title.toStdString();
        for (const double width : {reach - kClearOfTheEdge, reach + kClearOfTheEdge}) {
            const std::optional<KRSize> quick = byWords(title, width);
            ASSERT_TRUE(quick) << describe(title, width).toStdString();
            const KRTextLayout full(titleInFont(title, titleFont()), width, titleFont(), kLineHeight);
            EXPECT_EQ(full.lines().size(), width < reach ? 2u : 1u) << describe(title, width).toStdString();
            EXPECT_EQ(quick->height, full.height()) << describe(title, width).toStdString();
        }
    }
    // The engine counts the overhang of "plumber"'s last letter: just past the advance the full layout needs
    // a second line already, and so does the shortcut.
    const QString plumber = QStringLiteral("call the plumber");
    ASSERT_GT(-metrics.rightBearing(plumber.back()), kNearTheEdge + KRTextLayout::kWordFitSlack);
    const double pastTheAdvance = metrics.horizontalAdvance(plumber) + kNearTheEdge;
    const KRTextLayout full(titleInFont(plumber, titleFont()), pastTheAdvance, titleFont(), kLineHeight);
    EXPECT_EQ(full.lines().size(), 2u);
    const std::optional<KRSize> quick = byWords(plumber, pastTheAdvance);
    ASSERT_TRUE(quick);
    EXPECT_EQ(quick->height, full.height());
}

// The shortcut rests on Qt's line breaker having no break opportunity inside the words it takes and one at
// every single space between them. Checked for every word of up to four characters from each class it
// knows, longer ones from a smaller mix and from what numbers are made of, and every pair of short words.
TEST_F(KRTextLayoutTest, WordsTakenWordByWordBreakOnlyAtTheirSpaces) {
    const QFont font = titleFont();
    const QString everyClass = QStringLiteral("aZ7.,;:!?'\"()");
    const QString smallerMix = QStringLiteral("a7.!'()");
    const QString numberParts = QStringLiteral("a7.()");
    constexpr int kLongestWord = 4;
    constexpr int kLongestMixedWord = 5;
    constexpr int kLongestNumber = 6;
    constexpr int kLongestPairedWord = 2;
    constexpr int kReportedDifferences = 10;
    int taken = 0;
    int differences = 0;
    // Whether Qt breaks text taken word by word only where its words start; reports the first few that don't.
    const auto breaksOnlyBetweenWords = [&](const QString& text) {
        const std::vector<int> opportunities = breakOpportunities(text, font);
        if (opportunities == wordStarts(text)) {
            return true;
        }
        if (++differences <= kReportedDifferences) {
            ADD_FAILURE() << "Qt breaks \"" << text.toStdString() << "\" elsewhere, " << opportunities.size()
                          << " lines";
        }
        return false;
    };
    std::vector<QString> words = everyWord(everyClass, kLongestWord);
    for (const auto& [alphabet, length] :
         {std::pair{smallerMix, kLongestMixedWord}, std::pair{numberParts, kLongestNumber}}) {
        for (const QString& word : everyWord(alphabet, length)) {
            if (word.size() > kLongestWord) {
                words.push_back(word);
            }
        }
    }
    for (const QString& word : words) {
        const QString text = QStringLiteral("x ") + word + QStringLiteral(" y");
        if (!byWords(text, kWordWidth)) {
            continue;
        }
        ++taken;
        breaksOnlyBetweenWords(text);
    }
    const std::vector<QString> shortWords = everyWord(everyClass, kLongestPairedWord);
    for (const QString& first : shortWords) {
        for (const QString& second : shortWords) {
            const QString text = first + QLatin1Char(' ') + second;
            if (!byWords(text, kWordWidth)) {
                continue;
            }
            ++taken;
            breaksOnlyBetweenWords(text);
        }
    }
    EXPECT_EQ(differences, 0);
    // Most words are taken, among them those titles are made of.
    EXPECT_GT(taken, static_cast<int>(words.size() + shortWords.size() * shortWords.size()) / 2);
    for (const QString& word :
         {QStringLiteral("v2.3"), QStringLiteral("10:30"), QStringLiteral("1,000"), QStringLiteral("(ok)"),
          QStringLiteral("don't"), QStringLiteral("ready;"), QStringLiteral("\"quoted\"."),
          QStringLiteral("really?!"), QStringLiteral("e.g.")}) {
        EXPECT_TRUE(byWords(word, kWordWidth)) << word.toStdString();
    }
}

} // namespace
