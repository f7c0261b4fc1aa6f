#include "conformance/TexelRunner.h"

#include "conformance/Inputs.h"
#include "reference/Blit.h"

#include <utility>

namespace conformance {

namespace {

constexpr std::uint32_t kNoiseStart = 20240607;
constexpr int kMargin = 3;

std::vector<std::uint8_t> withoutAlpha(std::vector<std::uint8_t> const& rgba) {
    std::vector<std::uint8_t> rgb;
    for (size_t i = 0; i < rgba.size(); i += 4)
        rgb.insert(rgb.end(), {rgba[i], rgba[i + 1], rgba[i + 2]});
    return rgb;
}

reference::Texels opaque(std::vector<std::uint8_t> const& rgb, int width, int height) {
    reference::Texels texels(width, height);
    for (size_t i = 0; i < rgb.size() / 3; ++i) {
        for (size_t c = 0; c < 3; ++c)
            texels.bytes[4 * i + c] = rgb[3 * i + c];
        texels.bytes[4 * i + 3] = 255;
    }
    return texels;
}

} // namespace

size_t logicalWidth(Layout layout, int widthTexels) {
    return samplelayout::pixels(layout, static_cast<size_t>(widthTexels));
}

int texelsOf(Layout layout, int widthPixels) {
    return static_cast<int>(samplelayout::texels(layout, static_cast<size_t>(widthPixels)));
}

reference::Texels shown(reference::Texels texels, Layout layout) {
    for (size_t i = 3; layout == Layout::kRgb8 && i < texels.bytes.size(); i += 4)
        texels.bytes[i] = 255;
    return texels;
}

TexelRunner::TexelRunner(std::shared_ptr<RenderBackendInstance> instance) : runner_(std::move(instance)) {}

size_t TexelRunner::target(Layout layout, int widthTexels, int heightTexels) {
    OwnedTarget made = runner_.target(layout, {logicalWidth(layout, widthTexels), static_cast<size_t>(heightTexels)});
    size_t const id = made.id();
    pictures_.insert_or_assign(id, Picture{std::move(made), layout, widthTexels, heightTexels});
    return id;
}

size_t TexelRunner::uploaded(reference::Texels const& texels, Layout layout) {
    size_t const id = target(layout, texels.width, texels.height);
    Picture const& picture = pictures_.at(id);
    runner_.draw(picture.target, layout, picture.size(),
                 layout == Layout::kRgb8 ? withoutAlpha(texels.bytes) : texels.bytes, wholeOf(picture.size()));
    return id;
}

size_t TexelRunner::uploaded(reference::Plane const& samples) {
    return uploaded(packOneChannel16(samples), Layout::kOneChannel16);
}

size_t TexelRunner::uploaded(reference::Planes3 const& pixels) {
    return uploaded(packThreeChannel16(pixels), Layout::kThreeChannel16);
}

reference::Texels TexelRunner::read(size_t target) const {
    Picture const& picture = pictures_.at(target);
    std::vector<std::uint8_t> const bytes = runner_.read(picture.target, picture.layout, wholeOf(picture.size()));
    if (picture.layout == Layout::kRgb8) return opaque(bytes, picture.width, picture.height);
    return reference::Texels(picture.width, picture.height, bytes);
}

Filter TexelRunner::instantiated(Filter const& description) const {
    Filter filter = description;
    instance()->createFilterInstance(filter);
    return filter;
}

void TexelRunner::run(Filter const& filter, FilterRun const& run, size_t destination,
                      SingleFilterParameters const& params) const {
    runner_.run(filter, run, destination, params);
}

FilterRun TexelRunner::wholeRun(std::vector<size_t> const& sources) const {
    FilterRun whole;
    for (size_t const source : sources)
        whole.sources.push_back({source, 0, 0, false});
    whole.input = pictures_.at(sources.front()).size();
    return whole;
}

Comparison TexelRunner::compare(Filter const& filter, FilterRun const& run, reference::Texels const& expected,
                                Layout layout, SingleFilterParameters const& params) {
    size_t const destination = target(layout, expected.width, expected.height);
    this->run(filter, run, destination, params);
    return {read(destination), expected};
}

Comparison TexelRunner::compareWithin(Filter const& filter, FilterRun const& run, reference::Texels const& expected,
                                      Layout layout, SingleFilterParameters const& params) {
    auto const x = static_cast<int>(run.offset[0]);
    auto const y = static_cast<int>(run.offset[1]);
    int const width = x + expected.width + kMargin;
    // A pixel of three channels takes two texels.
    reference::Texels whole = randomTexels(width + width % 2, y + expected.height + kMargin, kNoiseStart);
    size_t const destination = uploaded(whole, layout);
    this->run(filter, run, destination, params);
    blit(expected, 0, 0, expected.width, expected.height, whole, x, y);
    return {read(destination), shown(whole, layout)};
}

void TexelRunner::eraseTargets() {
    if (pictures_.empty()) return;
    pictures_.clear();
    // An erased target may be recycled larger than requested, which changes the texture coordinates.
    instance()->clearTargets();
}

} // namespace conformance
