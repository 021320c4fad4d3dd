#pragma once

#include <benchmark/benchmark.h>

#include <QApplication>

#include <cstdio>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

// After the usual table, prints our time over the reference's for every pair of benchmarks that ran with
// the same argument ("BM_Ours/10000" against "BM_Theirs/10000"). With repetitions the median stands for a
// benchmark (pass --benchmark_repetitions=5); without, its one run. Counters that both of a pair report
// (bytes per row, say) are compared the same way.
//
// Every figure is also printed as one tab-separated line starting with "KRBENCH", which scripts/bench
// gathers from all programs into one table: label, argument, ours, the peer's name and figure, the ratio.
// Benchmarks without a peer appear there on their own.
class KRRatioReporter : public benchmark::ConsoleReporter {
public:
    struct Pair {
        std::string label;
        std::string ours;
        std::string theirs;
        std::string theirsName;
    };

    explicit KRRatioReporter(std::vector<Pair> pairs) : m_pairs(std::move(pairs)) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            if (run.run_type == Run::RT_Aggregate && !median) {
                continue;
            }
            Figure& figure = m_figures[Key{run.run_name.function_name, run.run_name.args}];
            // A median replaces the single runs it was taken from.
            if (figure.isMedian && !median) {
                continue;
            }
            figure.isMedian = median;
            figure.time = run.GetAdjustedRealTime();
            figure.unit = benchmark::GetTimeUnitString(run.time_unit);
            figure.counters.clear();
            for (const auto& [name, counter] : run.counters) {
                // Rates only restate the time.
                if (!(counter.flags & benchmark::Counter::kIsRate)) {
                    figure.counters[name] = counter.value;
                }
            }
        }
        ConsoleReporter::ReportRuns(runs);
    }

    void printRatios() const {
        std::set<std::string> paired;
        for (const Pair& pair : m_pairs) {
            paired.insert(pair.ours);
            paired.insert(pair.theirs);
            for (const auto& [key, ours] : m_figures) {
                if (key.first != pair.ours) {
                    continue;
                }
                const auto theirs = m_figures.find(Key{pair.theirs, key.second});
                if (theirs == m_figures.end()) {
                    continue;
                }
                printLine(pair.label, key.second, ours.time, pair.theirsName, theirs->second.time);
                for (const auto& [counter, value] : ours.counters) {
                    const auto theirCounter = theirs->second.counters.find(counter);
                    if (theirCounter != theirs->second.counters.end()) {
                        printLine(pair.label + ": " + counter, key.second, value, pair.theirsName,
                                  theirCounter->second);
                    }
                }
            }
        }
        for (const auto& [key, figure] : m_figures) {
            if (paired.count(key.first) == 0) {
                printLine(key.first + " (" + figure.unit + ")", key.second, figure.time, "", 0.0);
            }
        }
    }

private:
    using Key = std::pair<std::string, std::string>; // function name, argument
    struct Figure {
        double time = 0.0;
        std::string unit;
        std::map<std::string, double> counters;
        bool isMedian = false;
    };

    static void printLine(const std::string& label, const std::string& argument, double ours,
                          const std::string& theirsName, double theirs) {
        const std::string shownArgument = argument.empty() ? "-" : argument;
        if (theirsName.empty()) {
            std::printf("%s, %s: ours %.4f\n", label.c_str(), shownArgument.c_str(), ours);
            std::printf("KRBENCH\t%s\t%s\t%.4f\t-\t-\t-\n", label.c_str(), shownArgument.c_str(), ours);
            return;
        }
        const double ratio = theirs > 0.0 ? ours / theirs : 0.0;
        std::printf("%s, %s: ours %.4f, %s %.4f (same unit), ratio %.3f\n", label.c_str(),
                    shownArgument.c_str(), ours, theirsName.c_str(), theirs, ratio);
        std::printf("KRBENCH\t%s\t%s\t%.4f\t%s\t%.4f\t%.3f\n", label.c_str(), shownArgument.c_str(), ours,
                    theirsName.c_str(), theirs, ratio);
    }

    std::vector<Pair> m_pairs;
    std::map<Key, Figure> m_figures;
};

// Runs the benchmarks offscreen and prints the ratios.
inline int KRRunBenchmarksWithRatios(int argc, char** argv, std::vector<KRRatioReporter::Pair> pairs) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    KRRatioReporter reporter(std::move(pairs));
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatios();
    benchmark::Shutdown();
    return 0;
}
