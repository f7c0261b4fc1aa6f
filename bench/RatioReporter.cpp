#include "bench/RatioReporter.h"

#include <algorithm>
#include <iomanip>
#include <regex>
#include <utility>

namespace {

constexpr int kNameColumns = 60;
constexpr int kColumns = 12;

// Other work on the machine only ever adds time: the fastest repetition is the least disturbed one.
struct Summary {
    double fastest;
    double disturbance; // by how much the median is slower, over the fastest
};

Summary summary(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    double const fastest = values.front();
    return {fastest, values[values.size() / 2] / fastest - 1};
}

// The name with `part` replaced, empty if it does not occur.
std::string replaced(std::string const& name, std::string const& part, std::string const& by) {
    auto const found = name.find(part);
    return found == std::string::npos ? std::string() : std::string(name).replace(found, part.size(), by);
}

// By the wall clock if the benchmark asked for that.
double nanosecondsOf(benchmark::BenchmarkReporter::Run const& run) {
    bool const realTime = run.run_name.time_type.find("real_time") != std::string::npos;
    double const adjusted = realTime ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime();
    return adjusted / benchmark::GetTimeUnitMultiplier(run.time_unit) * 1e9;
}

} // namespace

RatioReporter::RatioReporter(std::vector<Figure> figures, std::vector<std::string> peers,
                             std::vector<OwnBaseline> ownBaselines)
    : ConsoleReporter(OO_Tabular),
      figures_(std::move(figures)),
      peers_(std::move(peers)),
      ownBaselines_(std::move(ownBaselines)) {}

void RatioReporter::ReportRuns(std::vector<Run> const& runs) {
    std::vector<Run> shown;
    for (Run const& run : runs) {
        std::string const& name = run.run_name.function_name;
        if (run.error_occurred) {
            ++errors_;
        } else if (run.run_type == Run::RT_Iteration) {
            names_[run.family_index] = name;
            nanoseconds_[name].push_back(nanosecondsOf(run));
        }
        // With many repetitions only the median is printed.
        bool const single = run.run_type == Run::RT_Iteration && run.repetitions <= 1;
        if (run.error_occurred || single || run.aggregate_name == "median") shown.push_back(run);
    }
    if (!shown.empty()) ConsoleReporter::ReportRuns(shown);
}

std::vector<RatioReporter::Line> RatioReporter::lines() const {
    std::vector<Line> found;
    for (auto const& [family, name] : names_) {
        auto const add = [&, &subject = name](std::string const& baseline, std::string const& title) {
            if (nanoseconds_.count(baseline) == 0) return;
            std::string line = subject;
            found.push_back({line.append(" vs ").append(title), subject, baseline});
        };
        for (std::string const& peer : peers_)
            add(replaced(name, "/ours/", "/" + peer + "/"), peer);
        for (OwnBaseline const& own : ownBaselines_)
            add(replaced(name, own.subject, own.baseline), own.title);
    }
    return found;
}

Figure const* RatioReporter::figureFor(std::string const& title) const {
    auto const found = std::find_if(figures_.begin(), figures_.end(), [&](Figure const& figure) {
        return std::regex_match(title, std::regex(figure.subjects));
    });
    return found == figures_.end() ? nullptr : &*found;
}

void RatioReporter::print(Line const& line) {
    Summary const subject = summary(nanoseconds_.at(line.name));
    Summary const baseline = summary(nanoseconds_.at(line.baseline));
    double const ratio = subject.fastest / baseline.fastest;
    Figure const* const figure = figureFor(line.title);

    auto& out = GetOutputStream();
    out << std::left << std::setw(kNameColumns) << line.title << std::right << std::fixed << std::setprecision(0)
        << std::setw(kColumns) << subject.fastest << std::setw(kColumns) << baseline.fastest << std::setprecision(3)
        << std::setw(kColumns) << ratio << std::setprecision(1) << std::setw(kColumns - 2)
        << 100 * std::max(subject.disturbance, baseline.disturbance) << " %";
    if (figure != nullptr) out << "  " << figure->wording << (ratio <= figure->limit ? ": met" : ": MISSED");
    out << "\n";
}

void RatioReporter::Finalize() {
    ConsoleReporter::Finalize();
    auto& out = GetOutputStream();
    out << "\n"
        << std::left << std::setw(kNameColumns) << "fastest of the repetitions" << std::right << std::setw(kColumns)
        << "ours ns" << std::setw(kColumns) << "baseline ns" << std::setw(kColumns) << "ratio" << std::setw(kColumns)
        << "disturbed"
        << "  figure\n";
    for (Line const& line : lines())
        print(line);
    if (errors_ != 0) out << errors_ << " benchmarks ended with an error and are not in the table\n";
}
