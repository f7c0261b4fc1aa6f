#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// What a ratio of times should not exceed.
struct Figure {
    std::string subjects; ///< regular expression for the lines it is about
    double limit;         ///< time of the subject over time of its baseline
    std::string wording;  ///< of the figure, for the table
};

/// A subject whose baseline is another benchmark of ours: the parts of their names that differ, and what to call it.
struct OwnBaseline {
    std::string subject;
    std::string baseline;
    std::string title;
};

/// Prints like the console reporter and, after the run, one line "WHAT/ours/CASE vs PEER" for each benchmark and each
/// of its baselines WHAT/PEER/CASE: both times, the ratio of the two, and whether that meets a figure. Times are those
/// of the fastest repetition; "disturbed" is by how much the median is slower, in percent, the larger of the two: where
/// it is large, the machine did other things.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    RatioReporter(std::vector<Figure> figures, std::vector<std::string> peers, std::vector<OwnBaseline> ownBaselines);

    void ReportRuns(std::vector<Run> const& runs) override;
    void Finalize() override;

    /// Benchmarks that ended with an error.
    size_t errors() const { return errors_; }

private:
    struct Line {
        std::string title;
        std::string name;
        std::string baseline;
    };

    std::vector<Line> lines() const;
    void print(Line const& line);
    Figure const* figureFor(std::string const& title) const;

    std::vector<Figure> figures_;
    std::vector<std::string> peers_;
    std::vector<OwnBaseline> ownBaselines_;
    std::map<std::int64_t, std::string> names_;              // in the order of registration
    std::map<std::string, std::vector<double>> nanoseconds_; // one value a repetition
    size_t errors_ = 0;
};
