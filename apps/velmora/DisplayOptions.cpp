#include "apps/velmora/DisplayOptions.h"

namespace {

constexpr auto kGroup = "How samples are shown";

} // namespace

void addDisplayOptions(CLI::App& command, DisplayRequest& request) {
    command.get_option("--range")
        ->description(
            "The samples that are shown black and full, LO and HI; auto: the 0.5th and the 99.5th percentile of "
            "a coarse level, the default of all but 8 bits")
        ->group(kGroup);
    command
        .add_option_function<std::string>(
            "--curve", [&request](std::string const& text) { request.curve = tone::parseCurve(text); },
            "The way from LO to HI: linear, log or asinh; the last two lift what is dark")
        ->type_name("NAME")
        ->check(CLI::IsMember({"linear", "log", "asinh"}))
        ->group(kGroup);
    command
        .add_option("--colour-map", request.colourMap,
                    "Colours for one channel: " + CLI::detail::join(colourmap::names()))
        ->type_name("NAME")
        ->check(CLI::IsMember(colourmap::names()))
        ->group(kGroup);
    command.add_flag("--invert", request.isInverted, "Turn the colours of one channel round")->group(kGroup);
}

DisplayRequest withRange(DisplayRequest request, ImageSelection const& selection) {
    request.range = selection.range;
    request.automaticRange = selection.automaticRange;
    return request;
}
