#include "conformance/Verification.h"

#include "conformance/Checks.h"
#include "host/FilterDescriptions.h"
#include "renderbackend/VelmoraException.h"

#include <chrono>
#include <map>

namespace conformance {

namespace {

using Check = std::function<void(Trial&)>;

Check named(void (*check)(Trial&, std::string const&), std::string const& name) {
    return [=](Trial& trial) { check(trial, name); };
}

std::map<std::string, Check> const& checks() {
    static std::map<std::string, Check> const table = {
        {"FilterFirIH53LeGall16", checkFirIH53LeGall16},
        {"FilterFirIV53LeGall16", checkFirIV53LeGall16},
        {"BlitFilter1x16", named(checkBlit, "BlitFilter1x16")},
        {"BlitFilter3x16", named(checkBlit, "BlitFilter3x16")},
        {"BlitFilter3x8", named(checkBlit, "BlitFilter3x8")},
        {"BlitFilter4x8", named(checkBlit, "BlitFilter4x8")},
        {"Filter1x16ToRGB8", check1x16ToRGB8},
        {"FilterInterleave16", checkInterleave16},
        {"FilterYCoCg16ToRGBA8", checkYCoCg16ToRGBA8},
        {"FilterYCoCg16ToRGB16", checkYCoCg16ToRGB16},
        {"Filter3x16To4x8", check3x16To4x8},
        {"FilterSharpness8", checkSharpness8},
        {"FilterSharpnessH16", checkSharpnessH16},
        {"FilterSharpnessV16", checkSharpnessV16},
        {"FilterLinear8ToSRGB8", checkLinear8ToSRGB8},
        {"FilterLinear16ToSRGB8", checkLinear16ToSRGB8},
        {"MaskFilter3x8", named(checkMask, "MaskFilter3x8")},
        {"MaskFilter4x8", named(checkMask, "MaskFilter4x8")},
        {"MaskFilter3x16", named(checkMask, "MaskFilter3x16")},
        {"FilterLinear16TosRGB8", checkLinear16TosRGB8},
        {"FilterTruncate16", checkTruncate16},
        {"Filter3x3Matrix8", check3x3Matrix8},
        {"Filter3x3Matrix16", check3x3Matrix16},
        {"FilterRemoveAlpha8", named(checkBlit, "FilterRemoveAlpha8")},
        {"FilterBlackWhiteGamma8", checkBlackWhiteGamma8},
        {"FilterRGBA8ToYCoCg16", checkRGBA8ToYCoCg16},
        {"FilterCLAHE", checkCLAHE},
    };
    return table;
}

} // namespace

Outcome verifyFilter(std::string const& name, FilterRunner& runner, Scope const& scope) {
    Outcome outcome;
    outcome.filter = name;
    auto const start = std::chrono::steady_clock::now();
    Trial trial(runner, scope);
    try {
        checks().at(name)(trial);
    } catch (std::exception const& error) {
        outcome.failure = formatExceptionMessage(error);
    }
    outcome.tally = trial.tally();
    outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return outcome;
}

std::vector<Outcome> verify(std::shared_ptr<RenderBackendInstance> const& instance, Scope const& scope,
                            VerificationProgress const& progress) {
    FilterRunner runner(instance);
    std::vector<std::string> const& names = description::names();
    std::vector<Outcome> outcomes;
    for (std::string const& name : names) {
        progress(name, outcomes.size(), names.size());
        outcomes.push_back(verifyFilter(name, runner, scope));
    }
    return outcomes;
}

} // namespace conformance
