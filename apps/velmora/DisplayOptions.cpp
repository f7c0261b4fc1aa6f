#include "apps/velmora/DisplayOptions.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr auto kGroup = "How samples are shown";
constexpr size_t kMostAlongAxis = 1000 * 1000;

// The sentence for the user, if the text is no channel.
std::string checkChannel(std::string const& text) {
    try {
        displayrequest::parseChannel(text);
    } catch (std::invalid_argument const& error) {
        return error.what();
    }
    return "";
}

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
    command
        .add_option_function<std::vector<std::string>>(
            "--channel",
            [&request](std::vector<std::string> const& texts) {
                for (std::string const& text : texts)
                    request.channels.push_back(displayrequest::parseChannel(text));
            },
            "A channel to show, counted from 0 as in OME-XML, its colour, and its range; once per channel, others are "
            "off")
        ->type_name("C[:RRGGBB][:LO,HI|:auto]")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->check(checkChannel)
        ->group(kGroup);
    command
        .add_option("--z", request.position.slice, "The slice of a stack, or the page where pages are slices, from 0")
        ->type_name("N")
        ->check(CLI::Range(size_t{0}, kMostAlongAxis))
        ->group(kGroup);
    command.add_option("--t", request.position.time, "The time of a stack, from 0")
        ->type_name("N")
        ->check(CLI::Range(size_t{0}, kMostAlongAxis))
        ->group(kGroup);
    command.add_flag("--invert", request.isInverted, "Turn the colours of one channel round")->group(kGroup);
}

void addColourOptions(CLI::App& command, ImageSelection& selection) {
    selection.followsProfile = true;
    selection.isUpright = true;
    command
        .add_flag_callback(
            "--no-icc", [&selection] { selection.followsProfile = false; },
            "Colours as they lie in the file, whatever its ICC profile says; default: they are converted to sRGB")
        ->group(kGroup);
    command
        .add_flag_callback(
            "--no-rotate", [&selection] { selection.isUpright = false; },
            "Pixels as they lie in the file, whatever its orientation tag says; default: they are turned upright")
        ->group(kGroup);
}

DisplayRequest withRange(DisplayRequest request, ImageSelection const& selection) {
    request.range = selection.range;
    request.automaticRange = selection.automaticRange;
    return request;
}
