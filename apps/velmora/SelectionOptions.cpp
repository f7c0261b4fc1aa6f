#include "apps/velmora/SelectionOptions.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>

namespace {

constexpr size_t kMaxPages = 1000 * 1000;
constexpr auto kGroup = "Part of an image";

// The parsed value, or the sentence for the user if parsing fails.
template <class Parse>
std::string sentenceOf(Parse const& parse) {
    try {
        parse();
    } catch (std::invalid_argument const& error) {
        return error.what();
    }
    return "";
}

} // namespace

void addSelectionOptions(CLI::App& command, ImageSelection& selection) {
    command
        .add_option("--page", selection.page,
                    "One picture of a file that holds several: a page, a frame, counted from 1")
        ->type_name("N")
        ->check(CLI::Range(size_t{1}, kMaxPages))
        ->group(kGroup);
    command
        .add_option_function<std::string>(
            "--bands", [&selection](std::string const& text) { selection.bands = imageselection::parseBands(text); },
            "Bands of a pixel, counted from 1, as grey, or as red, green and blue; one more is alpha")
        ->type_name("I[,A] or I,J,K[,A]")
        ->check([](std::string const& text) { return sentenceOf([&] { imageselection::parseBands(text); }); })
        ->group(kGroup);
    command
        .add_option_function<std::string>(
            "--range", [&selection](std::string const& text) { imageselection::parseRange(text, selection); },
            "Make 16 bits of samples: LO becomes 0, HI 65535, the rest is rounded, or clipped beyond; auto: from the "
            "smallest to the largest")
        ->type_name("LO,HI|auto")
        ->check([](std::string const& text) {
            ImageSelection parsed;
            return sentenceOf([&] { imageselection::parseRange(text, parsed); });
        })
        ->group(kGroup);
    command
        .add_flag("--to-srgb", selection.toSrgb,
                  "Convert colours that are neither grey nor RGB, such as CMYK and Lab, to sRGB of 8 bits")
        ->group(kGroup);
}

void addCacheOption(CLI::App& command, std::uint64_t& bytes) {
    command
        .add_option(
            "--cache-size", bytes,
            "What stores of images may take in the cache; those that were used longest ago go first. Default: 10GB")
        ->type_name("SIZE")
        ->transform(CLI::AsSizeValue(true))
        // Runs before the other one, which would take -1 for the largest number.
        ->transform(CLI::Validator(
            [](std::string const& text) {
                bool const isNumber = !text.empty() && text.front() >= '0' && text.front() <= '9';
                return isNumber ? std::string() : "\"" + text + "\" is no size, such as 10GB or 500MB";
            },
            ""));
}

std::string checkNamed(std::string const& name) {
    return name.empty() ? "the name of a file is empty" : "";
}
