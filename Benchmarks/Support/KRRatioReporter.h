#pragma once

#include <benchmark/benchmark.h>

#include <QApplication>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

// After the usual table, prints our time over the reference's for every pair of benchmarks that ran with
// the same argument ("BM_Ours/10000" against "BM_Theirs/10000").
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
            m_times[run.benchmark_name()] = run.GetAdjustedRealTime();
        }
        ConsoleReporter::ReportRuns(runs);
    }

    void printRatios() const {
        for (const Pair& pair : m_pairs) {
            for (const auto& [name, ours] : m_times) {
                if (name.rfind(pair.ours + "/", 0) != 0) {
                    continue;
                }
                const std::string argument = name.substr(pair.ours.size() + 1);
                const auto theirs = m_times.find(pair.theirs + "/" + argument);
                if (theirs == m_times.end() || theirs->second <= 0.0) {
                    continue;
                }
                std::printf("%s, %s: ours %.4f, %s %.4f (same unit), ratio %.3f\n", pair.label.c_str(),
                            argument.c_str(), ours, pair.theirsName.c_str(), theirs->second,
                            ours / theirs->second);
            }
        }
    }

private:
    std::vector<Pair> m_pairs;
    std::map<std::string, double> m_times;
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
