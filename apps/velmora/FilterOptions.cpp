#include "apps/velmora/FilterOptions.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <stdexcept>
#include <string>

namespace {

// A filter of the command line: its name, the form of its text, and its parser.
struct FilterOption {
    char const* name;
    char const* form;
    char const* help;
    enhancement::Step (*parse)(std::string const& text);
};

enhancement::Step parseSrgb(std::string const&) {
    return enhancement::LinearToSrgb();
}

template <auto parse>
enhancement::Step parsed(std::string const& text) {
    return parse(text);
}

constexpr std::array<FilterOption, 6> kFilters = {{
    {"--sharpen", "G", "Unsharp mask of gain G, in steps of 1/32", parsed<enhancement::parseSharpen>},
    {"--matrix", "M1,...,M9[,S]", "Colour matrix, row by row (M1 M2 M3 make red), times strength S",
     parsed<enhancement::parseColourMatrix>},
    {"--gamma", "G,BLACK,WHITE",
     "Tone curve; the points are codes of a 16-bit file, or 4096 codes of linear light, white 3500",
     parsed<enhancement::parseGamma>},
    {"--srgb", "", "Linear samples to sRGB", parseSrgb},
    {"--clahe", "CLIP", "Contrast-limited adaptive equalisation of the luma, CLIP 1 or more",
     parsed<enhancement::parseEqualise>},
    {"--truncate", "BITS[,round]", "Clear the lower BITS bits; with ,round set them to the middle of the step",
     parsed<enhancement::parseTruncate>},
}};

std::string checkFilter(FilterOption const& filter, std::string const& text) {
    try {
        filter.parse(text);
    } catch (std::invalid_argument const& error) {
        return error.what();
    }
    return "";
}

} // namespace

void addFilterOptions(CLI::App& command) {
    for (FilterOption const& filter : kFilters) {
        if (*filter.form == '\0') {
            command.add_flag(filter.name, filter.help)->group("Filters");
            continue;
        }
        command.add_option(filter.name, filter.help)
            ->type_name(filter.form)
            ->expected(1)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
            ->check([&filter](std::string const& text) { return checkFilter(filter, text); })
            ->group("Filters");
    }
}

std::vector<enhancement::Step> filterStepsOf(CLI::App const& command) {
    std::map<CLI::Option const*, size_t> used;
    std::vector<enhancement::Step> steps;
    for (CLI::Option const* const option : command.parse_order()) {
        auto const* const filter = std::find_if(kFilters.begin(), kFilters.end(),
                                                [=](FilterOption const& one) { return option->check_name(one.name); });
        if (filter == kFilters.end()) continue;
        size_t const occurrence = used[option]++;
        steps.push_back(filter->parse(option->results().at(occurrence)));
    }
    return steps;
}
