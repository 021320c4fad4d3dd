// Measuring the titles of a 10,000-item list (mostly one line, some wrapped) in full, and through the
// layout's shortcuts with a cold and a warm word cache, against QListWidget laying out the same word-wrapped
// items; and one keystroke in a field editor holding a typical and a 2,000-character title, against Qt's
// text document taking the same key.
#include "Support/KRBenchmarkTitles.h"
#include "Support/KRRatioReporter.h"
#include "Text/KRTextField.h"
#include "Text/KRTextLayout.h"
#include "Text/KRTextView.h"
#include "Text/KRWordAdvanceCache.h"
#include "Views/KRWindow.h"

#include <QAbstractTextDocumentLayout>
#include <QListWidget>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

namespace {

constexpr double kTitleWidth = 300.0;
constexpr double kLineHeight = 18.0;
constexpr double kUnbounded = 99999999.0;

QFont titleFont() {
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(13);
    return font;
}

KRTextAttributes titleAttributes() {
    KRTextAttributes attributes;
    attributes.font = titleFont();
    attributes.foregroundColor = QColor(0x25, 0x27, 0x2C);
    attributes.strikethroughStyle = 0;
    attributes.paragraphStyle = KRParagraphStyle{kLineHeight, kLineHeight};
    return attributes;
}

void BM_KRTextField_MeasureTitles(benchmark::State& state) {
    const std::vector<QString> titles = KRBenchmarkTitles(static_cast<int>(state.range(0)));
    // One attribute set for every title, as a list styles all its rows alike.
    const KRTextAttributes attributes = titleAttributes();
    std::vector<KRAttributedString> values;
    for (const QString& title : titles) {
        values.emplace_back(title, attributes);
    }
    KRTextField field(KRRectMake(0, 0, kTitleWidth, kLineHeight));
    field.setBordered(false);
    for (auto _ : state) {
        double total = 0.0;
        for (const KRAttributedString& value : values) {
            // Each new value drops the cached answers, so every title is measured afresh.
            field.setAttributedStringValue(value);
            total += field.sizeThatFits(KRSizeMake(kTitleWidth, kUnbounded)).height;
            total += field.sizeThatFits(KRSizeMake(kUnbounded, kUnbounded)).height;
        }
        benchmark::DoNotOptimize(total);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// The benchmark titles as a list holds them: one attribute set for every title, as a list styles all its
// rows alike.
std::vector<KRAttributedString> titleValues(int count) {
    const KRTextAttributes attributes = titleAttributes();
    std::vector<KRAttributedString> values;
    for (const QString& title : KRBenchmarkTitles(count)) {
        values.emplace_back(title, attributes);
    }
    return values;
}

// The same measurements without any shortcut, to show what they save.
void BM_KRTextLayout_MeasureTitlesFullLayout(benchmark::State& state) {
    const std::vector<KRAttributedString> values = titleValues(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        double total = 0.0;
        for (const KRAttributedString& value : values) {
            total += KRTextLayout(value, kTitleWidth, titleFont(), kLineHeight).height();
            total += KRTextLayout(value, kUnbounded, titleFont(), kLineHeight).height();
        }
        benchmark::DoNotOptimize(total);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// The same measurements through the text layout's shortcuts, mostly word by word from cached advances.
// Cold starts every pass with an empty word cache, as the first reload after launch does; warm keeps the
// words a previous pass learnt, as every later reload finds them.
void measureTitlesWordByWord(benchmark::State& state, bool cold) {
    const QFont font = titleFont();
    const std::vector<KRAttributedString> values = titleValues(static_cast<int>(state.range(0)));
    int byWords = 0;
    for (const KRAttributedString& value : values) {
        byWords += KRTextLayout::measureWordByWord(value, kTitleWidth, font, kLineHeight) ? 1 : 0;
    }
    for (auto _ : state) {
        if (cold) {
            state.PauseTiming();
            KRWordAdvanceCache::clearShared();
            state.ResumeTiming();
        }
        double total = 0.0;
        for (const KRAttributedString& value : values) {
            total += KRTextLayout::measure(value, kTitleWidth, font, kLineHeight).height;
            total += KRTextLayout::measure(value, kUnbounded, font, kLineHeight).height;
        }
        benchmark::DoNotOptimize(total);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    // How many titles were answered word by word at the list's width.
    state.counters["word_by_word"] = static_cast<double>(byWords) / static_cast<double>(values.size());
}

void BM_KRTextLayout_MeasureTitlesWordByWordCold(benchmark::State& state) {
    measureTitlesWordByWord(state, true);
}

void BM_KRTextLayout_MeasureTitlesWordByWordWarm(benchmark::State& state) {
    measureTitlesWordByWord(state, false);
}

void BM_QListWidget_MeasureTitles(benchmark::State& state) {
    const std::vector<QString> titles = KRBenchmarkTitles(static_cast<int>(state.range(0)));
    QListWidget list;
    list.setWordWrap(true);
    list.setFont(titleFont());
    list.resize(static_cast<int>(kTitleWidth), 600);
    for (const QString& title : titles) {
        list.addItem(title);
    }
    for (auto _ : state) {
        // Lays every item out afresh, asking its delegate for the wrapped size.
        list.doItemsLayout();
        benchmark::DoNotOptimize(list.visualItemRect(list.item(list.count() - 1)));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

QString titleOfLength(int length) {
    QString title;
    for (const QString& phrase : KRBenchmarkTitles(length / 4 + 1)) {
        title += phrase + QLatin1Char(' ');
        if (title.size() >= length) {
            break;
        }
    }
    return title.left(length);
}

// One keystroke: the character goes in, the field hears of it, and the field and its editor are measured
// as a row would measure them; then a Backspace takes it out the same way. Two keystrokes per iteration.
void BM_KRTextField_Keystroke(benchmark::State& state) {
    const int length = static_cast<int>(state.range(0));
    KRTextView::installTextSystem();
    KRWindow window;
    auto content = std::make_shared<KRView>(KRRectMake(0, 0, kTitleWidth, 2000));
    window.setContentView(content);
    auto field = std::make_shared<KRTextField>(KRRectMake(0, 0, kTitleWidth, 1000));
    field->setBordered(false);
    field->setAttributedStringValue(KRAttributedString(titleOfLength(length), titleAttributes()));
    content->addSubview(field);
    window.makeFirstResponder(field.get());
    KRTextView* editor = field->currentEditor();
    editor->setSelectedRange(KRMakeRange(static_cast<KRUInteger>(length / 2), 0));
    const auto measure = [&] {
        benchmark::DoNotOptimize(field->sizeThatFits(KRSizeMake(kTitleWidth, kUnbounded)));
        benchmark::DoNotOptimize(editor->insertionPointRect());
    };
    for (auto _ : state) {
        editor->insertText(QStringLiteral("a"));
        measure();
        editor->doCommandBySelector(KRSelector("deleteBackward:"));
        measure();
    }
    state.SetItemsProcessed(state.iterations() * 2);
    window.makeFirstResponder(nullptr);
}

// Qt's own document taking the same two keystrokes through a text cursor and laying the paragraph out again.
// (A QTextEdit would only queue that layout for its event loop, so timing one in a loop measures no layout.)
void BM_QTextDocument_Keystroke(benchmark::State& state) {
    const int length = static_cast<int>(state.range(0));
    QTextDocument document;
    document.setDefaultFont(titleFont());
    document.setDocumentMargin(0.0);
    document.setTextWidth(kTitleWidth);
    document.setPlainText(titleOfLength(length));
    QTextCursor cursor(&document);
    cursor.setPosition(length / 2);
    const auto measure = [&] {
        benchmark::DoNotOptimize(document.size());
        benchmark::DoNotOptimize(document.documentLayout()->blockBoundingRect(document.firstBlock()));
    };
    for (auto _ : state) {
        cursor.insertText(QStringLiteral("a"));
        measure();
        cursor.deletePreviousChar();
        measure();
    }
    state.SetItemsProcessed(state.iterations() * 2);
}

} // namespace

BENCHMARK(BM_KRTextField_MeasureTitles)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KRTextLayout_MeasureTitlesFullLayout)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KRTextLayout_MeasureTitlesWordByWordCold)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KRTextLayout_MeasureTitlesWordByWordWarm)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_QListWidget_MeasureTitles)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KRTextField_Keystroke)->Arg(60)->Arg(2000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_QTextDocument_Keystroke)->Arg(60)->Arg(2000)->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv) {
    return KRRunBenchmarksWithRatios(
        argc, argv,
        {{"measure titles (ms)", "BM_KRTextField_MeasureTitles", "BM_QListWidget_MeasureTitles",
          "QListWidget"},
         {"measure titles word by word, cold (ms)", "BM_KRTextLayout_MeasureTitlesWordByWordCold",
          "BM_QListWidget_MeasureTitles", "QListWidget"},
         {"measure titles word by word, warm (ms)", "BM_KRTextLayout_MeasureTitlesWordByWordWarm",
          "BM_QListWidget_MeasureTitles", "QListWidget"},
         {"two keystrokes in a title of this many characters (us)", "BM_KRTextField_Keystroke",
          "BM_QTextDocument_Keystroke", "QTextDocument"}});
}
