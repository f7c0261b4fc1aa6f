#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// An upper limit of a ratio of times.
struct Figure {
    std::string subjects; ///< regular expression for the lines that it applies to
    double limit;         ///< time of the subject divided by time of its baseline
    std::string wording;  ///< the limit's text in the table
};

/// A subject whose baseline is another benchmark of ours: the differing parts of their names, and the baseline's label.
struct OwnBaseline {
    std::string subject;
    std::string baseline;
    std::string title;
};

/// Prints like the console reporter and, after the run, one line "WHAT/ours/CASE vs PEER" per benchmark and baseline
/// WHAT/PEER/CASE: both times, their ratio, and whether it meets a figure. Times are those of the fastest repetition;
/// "disturbed" is by how much the median is slower, in percent, the larger of the two: if it is large, the machine did
/// other work.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    RatioReporter(std::vector<Figure> figures, std::vector<std::string> peers, std::vector<OwnBaseline> ownBaselines);

    void ReportRuns(std::vector<Run> const& runs) override;
    void Finalize() override;

    /// Number of benchmarks that ended with an error.
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
    std::map<std::string, std::vector<double>> nanoseconds_; // one value per repetition
    size_t errors_ = 0;
};
