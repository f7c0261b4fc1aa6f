#include "apps/velmora/Commands.h"
#include "apps/velmora/shared/Interruption.h"
#include "apps/velmora/shared/ProgressBar.h"
#include "conformance/Verification.h"
#include "conformance/channels/HostFilterChecks.h"
#include "gles3renderbackend/Gles3RenderBackend.h"
#include "host/HostError.h"
#include "host/PlainText.h"
#include "host/channels/HostFilters.h"
#include "host/gl/GlInfo.h"
#include "host/gl/SurfacelessContext.h"
#include "renderbackend/RenderBackendInstance.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <iostream>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

namespace {

using conformance::Outcome;

constexpr size_t kTileBudgetBytes = 64 * 1000 * 1000;

constexpr auto kExplanation = R"(Each filter runs on this machine's OpenGL ES with inputs that tell a wrong result from
a right one, and every byte is compared with what plain integer code gives. Exit code 1
where one differs.)";

struct Options {
    bool full = false;
    bool json = false;
};

template <class Value>
Value sumOver(std::vector<Outcome> const& outcomes, Value (*valueOf)(Outcome const&)) {
    return std::accumulate(outcomes.begin(), outcomes.end(), Value{},
                           [=](Value sum, Outcome const& outcome) { return sum + valueOf(outcome); });
}

struct Totals {
    std::uint64_t pixels;
    std::uint64_t differingBytes;
    double seconds;
    std::ptrdiff_t inexact;
};

Totals totalsOf(std::vector<Outcome> const& outcomes) {
    using Count = std::uint64_t;
    return {sumOver<Count>(outcomes, [](Outcome const& outcome) { return outcome.tally.pixels; }),
            sumOver<Count>(outcomes, [](Outcome const& outcome) { return outcome.tally.differingBytes; }),
            sumOver<double>(outcomes, [](Outcome const& outcome) { return outcome.seconds; }),
            std::count_if(outcomes.begin(), outcomes.end(), [](Outcome const& outcome) { return !outcome.exact(); })};
}

std::vector<Outcome> outcomes(Options const& options, SurfacelessContext& context, GlInfo const& gl) {
    Gles3RenderBackend backend(hostfilters::registry(), RenderBackend::RGBA32, kTileBudgetBytes);
    ProgressBar bar("verifying", stderr);
    conformance::Scope const scope = {options.full ? conformance::Depth::kFull : conformance::Depth::kThorough,
                                      std::min({gl.maxTextureSize, gl.maxViewport[0], gl.maxViewport[1]})};
    return conformance::verify(
        backend.createInstance(context), scope,
        [&](size_t done, size_t total) {
            interruption::throwIfNoted();
            bar.update(done, total);
        },
        conformance::hostFilterChecks());
}

void printRow(std::string const& name, std::uint64_t pixels, std::uint64_t differingBytes, double seconds) {
    std::printf("%-24s%16" PRIu64 "%18" PRIu64 "%11.2f\n", name.c_str(), pixels, differingBytes, seconds);
}

void printTable(std::vector<Outcome> const& outcomes, GlInfo const& gl) {
    std::printf("%s, %s\n\n", terminalText(gl.renderer).c_str(), terminalText(gl.version).c_str());
    std::printf("%-24s%16s%18s%11s\n", "filter", "pixels tried", "differing bytes", "seconds");
    for (Outcome const& outcome : outcomes) {
        printRow(outcome.filter, outcome.tally.pixels, outcome.tally.differingBytes, outcome.seconds);
        if (!outcome.tally.firstDifference.empty()) std::printf("  %s\n", outcome.tally.firstDifference.c_str());
        if (!outcome.failure.empty()) std::printf("  failed: %s\n", onOneLine(outcome.failure).c_str());
    }
    Totals const totals = totalsOf(outcomes);
    printRow(std::to_string(outcomes.size()) + " filters", totals.pixels, totals.differingBytes, totals.seconds);
}

void printJson(std::vector<Outcome> const& outcomes, GlInfo const& gl, bool full) {
    nlohmann::ordered_json report = {{"program", "velmora " VELMORA_VERSION},
                                     {"renderer", gl.renderer},
                                     {"vendor", gl.vendor},
                                     {"version", gl.version},
                                     {"full", full},
                                     {"filters", nlohmann::ordered_json::array()}};
    for (Outcome const& outcome : outcomes)
        report["filters"].push_back({{"name", outcome.filter},
                                     {"pixels", outcome.tally.pixels},
                                     {"differingBytes", outcome.tally.differingBytes},
                                     {"firstDifference", outcome.tally.firstDifference},
                                     {"failure", onOneLine(outcome.failure)},
                                     {"seconds", outcome.seconds}});
    Totals const totals = totalsOf(outcomes);
    report["pixels"] = totals.pixels;
    report["differingBytes"] = totals.differingBytes;
    report["exact"] = totals.inexact == 0;
    report["seconds"] = totals.seconds;
    // JSON is UTF-8; a driver's texts may hold any bytes.
    std::cout << report.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
}

void verify(Options const& options) {
    SurfacelessContext context;
    GlInfo const gl = queryGlInfo();
    std::vector<Outcome> const all = outcomes(options, context, gl);
    if (options.json)
        printJson(all, gl, options.full);
    else
        printTable(all, gl);
    std::ptrdiff_t const inexact = totalsOf(all).inexact;
    if (inexact > 0)
        throw HostError(HostError::Kind::InexactGl, std::to_string(inexact) + " of " + std::to_string(all.size()) +
                                                        " filters are not exact on " + gl.renderer +
                                                        "; please report the output of velmora verify --json");
}

} // namespace

void addVerifyCommand(CLI::App& program) {
    auto const options = std::make_shared<Options>();
    auto* const command =
        program.add_subcommand("verify", "Compare every filter on this machine's OpenGL ES with plain integer code");
    command->footer(kExplanation);
    command->add_flag("--full", options->full, "Exhaustive sets: all 2^24 colours, and more; takes minutes");
    command->add_flag("--json", options->json, "Print JSON instead of a table");
    command->callback([options] { verify(*options); });
}
