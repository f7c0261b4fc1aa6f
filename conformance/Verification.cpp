#include "conformance/Verification.h"

#include "host/filter/FilterDescriptions.h"
#include "renderbackend/VelmoraException.h"

#include <chrono>
#include <stdexcept>

namespace conformance {

namespace {

Checks const& catalogue() {
    static Checks const all = [] {
        Checks checks;
        for (auto const& subject : {copyChecks(), maskChecks(), waveletChecks(), colourChecks(), matrixChecks(),
                                    sharpness8Checks(), sharpness16Checks(), toneChecks(), equalisationChecks()})
            for (auto const& entry : subject)
                if (!checks.insert(entry).second) throw std::logic_error("two checks are called " + entry.first);
        return checks;
    }();
    return all;
}

Check const& runsOf(std::string const& name) {
    auto const found = catalogue().find(name);
    if (found != catalogue().end()) return found->second;
    throw std::out_of_range(name + " has no runs beside a model: add them to the Checks of its subject, "
                                   "conformance/...Checks.cpp");
}

// Exceptions of the backend have texts with named fields; others may be any, and an empty text would count as no
// failure.
std::string textOf(std::exception const& error) {
    std::string report = formatExceptionMessage(error);
    if (!report.empty()) return report;
    std::string const text = error.what();
    return text.empty() ? "an exception without a text" : text;
}

} // namespace

std::vector<std::string> namesWithRuns() {
    std::vector<std::string> names;
    for (auto const& entry : catalogue())
        names.push_back(entry.first);
    return names;
}

namespace {

Outcome outcomeOf(std::string const& name, std::function<Check const&()> const& check, TexelRunner& runner,
                  Scope const& scope) {
    Outcome outcome;
    outcome.filter = name;
    auto const start = std::chrono::steady_clock::now();
    Trial trial(runner, scope);
    try {
        check()(trial);
    } catch (std::exception const& error) {
        outcome.failure = textOf(error);
    }
    outcome.tally = trial.tally();
    outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return outcome;
}

} // namespace

Outcome verifyFilter(std::string const& name, TexelRunner& runner, Scope const& scope) {
    return outcomeOf(
        name, [&]() -> Check const& { return runsOf(name); }, runner, scope);
}

void visitPointwise(std::string const& name, TexelRunner& runner, PointwiseVisitor const& visitor) {
    Scope scope;
    scope.depth = Depth::kSharp;
    Trial trial(runner, scope, visitor);
    runsOf(name)(trial);
}

std::vector<Outcome> verify(std::shared_ptr<RenderBackendInstance> const& instance, Scope const& scope,
                            Progress const& progress, Checks const& own) {
    TexelRunner runner(instance);
    std::vector<std::string> const& names = description::names();
    std::vector<Outcome> outcomes;
    for (std::string const& name : names) {
        progress(outcomes.size(), names.size() + own.size());
        outcomes.push_back(verifyFilter(name, runner, scope));
    }
    for (auto const& entry : own) {
        progress(outcomes.size(), names.size() + own.size());
        outcomes.push_back(outcomeOf(
            entry.first, [&]() -> Check const& { return entry.second; }, runner, scope));
    }
    return outcomes;
}

} // namespace conformance
