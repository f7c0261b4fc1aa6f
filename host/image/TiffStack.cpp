#include "host/image/TiffStack.h"

#include "host/image/OmeXml.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <numeric>
#include <set>
#include <sstream>

namespace {

constexpr size_t kMissing = static_cast<size_t>(-1);
constexpr auto kImageJ = "ImageJ=";

// Numbers the planes of an OME image in the order of its axes.
class OmeOrder {
public:
    OmeOrder(ImageStack const& size, std::string const& axes) : size_(size) {
        for (char const axis : axes)
            if (axis == 'C' || axis == 'Z' || axis == 'T') axes_ += axis;
        std::string sorted = axes_;
        std::sort(sorted.begin(), sorted.end());
        isKnown_ = sorted == "CTZ";
    }

    bool isKnown() const { return isKnown_; }

    size_t numberOf(size_t channel, size_t slice, size_t time) const {
        size_t number = 0;
        for (auto axis = axes_.rbegin(); axis != axes_.rend(); ++axis)
            number = number * extent(*axis) + (*axis == 'C' ? channel : *axis == 'Z' ? slice : time);
        return number;
    }

    // As TiffStack numbers it.
    size_t planeOf(size_t number) const {
        size_t channel = 0;
        size_t slice = 0;
        size_t time = 0;
        for (char const axis : axes_) {
            (axis == 'C' ? channel : axis == 'Z' ? slice : time) = number % extent(axis);
            number /= extent(axis);
        }
        return (time * size_.slices + slice) * size_.planes + channel;
    }

private:
    size_t extent(char axis) const { return axis == 'C' ? size_.planes : axis == 'Z' ? size_.slices : size_.times; }

    ImageStack size_;
    std::string axes_; // without X and Y
    bool isKnown_ = false;
};

// The directory of each plane; empty if one lies in another file, or nowhere.
std::vector<size_t> directoriesOf(OmeImage const& image, ImageStack const& size, OmeOrder const& order) {
    size_t const count = size.pages();
    std::vector<OmeImage::Block> const all(1);
    std::vector<size_t> directories(count, kMissing);
    for (OmeImage::Block const& block : image.blocks.empty() ? all : image.blocks) {
        bool const isInside =
            block.channel < size.planes && block.slice < size.slices && block.time < size.times && !block.isElsewhere;
        if (!isInside) return {};
        size_t const first = order.numberOf(block.channel, block.slice, block.time);
        size_t const planes = block.planes.value_or(block.directory ? 1 : count - first);
        if (planes > count - first) return {};
        for (size_t i = 0; i < planes; ++i)
            directories[order.planeOf(first + i)] = block.directory.value_or(0) + i;
    }
    bool const isWhole = std::find(directories.begin(), directories.end(), kMissing) == directories.end();
    return isWhole ? directories : std::vector<size_t>();
}

std::optional<TiffStack> ofOme(TiffChain const& chain, OmeImage const& image) {
    size_t const bands = chain.entries[chain.pages.front()].kind.bands;
    if (bands == 0 || image.samples % bands != 0) return std::nullopt;
    TiffStack stack;
    stack.size = {image.samples / bands, image.slices, image.times, "z"};
    size_t const count = stack.size.pages();
    OmeOrder const order(stack.size, image.order);
    if (count == 0 || count > chain.pages.size() || !order.isKnown()) return std::nullopt;
    for (size_t const directory : directoriesOf(image, stack.size, order)) {
        auto const page = std::lower_bound(chain.pages.begin(), chain.pages.end(), directory);
        if (page == chain.pages.end() || *page != directory) return std::nullopt;
        stack.pages.push_back(static_cast<size_t>(page - chain.pages.begin()));
    }
    if (stack.pages.empty()) return std::nullopt;
    bool const isNamed = bands == 1 && image.channels.size() == stack.size.planes;
    if (isNamed)
        for (OmeImage::Channel const& channel : image.channels)
            stack.bands.push_back({channel.name, channel.colour});
    return stack;
}

// The number in a line "key=number" of ImageJ's description; 1 if there is none.
size_t lineNumber(std::string const& description, std::string const& key) {
    std::istringstream lines(description);
    for (std::string line; std::getline(lines, line);) {
        if (line.compare(0, key.size() + 1, key + "=") != 0) continue;
        size_t number = 0;
        std::from_chars(line.data() + key.size() + 1, line.data() + line.size(), number);
        return number;
    }
    return 1;
}

// Channels vary fastest, then slices, then times.
std::optional<TiffStack> ofImageJ(TiffChain const& chain, std::string const& description) {
    TiffStack stack;
    stack.size = {lineNumber(description, "channels"), lineNumber(description, "slices"),
                  lineNumber(description, "frames"), "z"};
    for (size_t const extent : {stack.size.planes, stack.size.slices, stack.size.times})
        if (extent == 0 || extent > chain.pages.size()) return std::nullopt;
    if (stack.size.pages() != chain.pages.size()) return std::nullopt;
    stack.pages.resize(chain.pages.size());
    std::iota(stack.pages.begin(), stack.pages.end(), size_t{0});
    return stack;
}

TiffStack ofPages(TiffChain const& chain) {
    TiffStack stack;
    stack.size = {1, chain.pages.size(), 1, "page"};
    stack.pages.resize(chain.pages.size());
    std::iota(stack.pages.begin(), stack.pages.end(), size_t{0});
    return stack;
}

// Whether all planes are of one kind, each is another page, and there are several.
bool isWhole(TiffChain const& chain, TiffStack const& stack) {
    auto const entry = [&](size_t page) -> TiffChain::Entry const& { return chain.entries[chain.pages[page]]; };
    std::set<size_t> const different(stack.pages.begin(), stack.pages.end());
    return stack.pages.size() > 1 && different.size() == stack.pages.size() &&
           std::all_of(stack.pages.begin(), stack.pages.end(), [&](size_t page) {
               return entry(page).kind == entry(stack.pages.front()).kind &&
                      entry(page).subDirectories.size() == entry(stack.pages.front()).subDirectories.size();
           });
}

} // namespace

std::optional<TiffStack> TiffStack::of(TiffChain const& chain, std::string const& description) {
    std::optional<TiffStack> stack;
    if (auto const ome = omexml::parse(description))
        stack = ofOme(chain, *ome);
    else if (description.compare(0, std::string(kImageJ).size(), kImageJ) == 0)
        stack = ofImageJ(chain, description);
    else
        stack = ofPages(chain);
    return stack && isWhole(chain, *stack) ? stack : std::nullopt;
}
