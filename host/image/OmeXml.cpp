#include "host/image/OmeXml.h"

#include <pugixml.hpp>

#include <algorithm>
#include <charconv>
#include <string_view>

namespace {

// Above, products of an image's sizes might overflow.
constexpr size_t kMostAlongAxis = 1000 * 1000;

template <class Number>
std::optional<Number> numberOf(std::string_view text) {
    Number number{};
    auto const end = std::from_chars(text.data(), text.data() + text.size(), number);
    if (end.ec != std::errc() || end.ptr != text.data() + text.size()) return std::nullopt;
    return number;
}

std::optional<size_t> countOf(pugi::xml_node const& node, char const* name) {
    auto const count = numberOf<size_t>(node.attribute(name).value());
    return count && *count <= kMostAlongAxis ? count : std::nullopt;
}

struct Unit {
    char const* name;
    double millimetres;
};

// Micrometres if no unit is stated. The letter mu comes as micro sign, or as Greek mu.
constexpr std::array<Unit, 9> kUnits{{{"", 1e-3},
                                      {"\xc2\xb5m", 1e-3},
                                      {"\xce\xbcm", 1e-3},
                                      {"um", 1e-3},
                                      {"nm", 1e-6},
                                      {"pm", 1e-9},
                                      {"mm", 1},
                                      {"cm", 10},
                                      {"m", 1000}}};

double millimetresOf(pugi::xml_node const& pixels, std::string const& name) {
    std::string const unit = pixels.attribute((name + "Unit").c_str()).value();
    auto const* const known =
        std::find_if(kUnits.begin(), kUnits.end(), [&](Unit const& one) { return unit == one.name; });
    double const size = numberOf<double>(pixels.attribute(name.c_str()).value()).value_or(0);
    return known == kUnits.end() || !(size > 0) ? 0 : size * known->millimetres;
}

// Red, green, blue and alpha, one byte each, as a signed number of 32 bits.
std::optional<std::array<std::uint8_t, 3>> colourOf(pugi::xml_node const& channel) {
    auto const stated = numberOf<std::int32_t>(channel.attribute("Color").value());
    if (!stated) return std::nullopt;
    auto const bits = static_cast<std::uint32_t>(*stated);
    return std::array<std::uint8_t, 3>{static_cast<std::uint8_t>(bits >> 24U), static_cast<std::uint8_t>(bits >> 16U),
                                       static_cast<std::uint8_t>(bits >> 8U)};
}

OmeImage::Block blockOf(pugi::xml_node const& data, std::string const& ownId) {
    OmeImage::Block block;
    block.directory = countOf(data, "IFD");
    block.channel = countOf(data, "FirstC").value_or(0);
    block.slice = countOf(data, "FirstZ").value_or(0);
    block.time = countOf(data, "FirstT").value_or(0);
    block.planes = countOf(data, "PlaneCount");
    // The name of the file is not looked at: users rename files.
    pugi::xml_node const file = data.child("UUID");
    block.isElsewhere = file && !ownId.empty() && ownId != file.child_value();
    return block;
}

} // namespace

std::optional<OmeImage> omexml::parse(std::string const& description) {
    if (description.find("<OME") == std::string::npos) return std::nullopt;
    pugi::xml_document document;
    if (!document.load_buffer(description.data(), description.size())) return std::nullopt;
    pugi::xml_node const root = document.child("OME");
    pugi::xml_node const pixels = root.child("Image").child("Pixels");
    if (!pixels) return std::nullopt;

    OmeImage image;
    image.samples = countOf(pixels, "SizeC").value_or(1);
    image.slices = countOf(pixels, "SizeZ").value_or(1);
    image.times = countOf(pixels, "SizeT").value_or(1);
    if (pugi::xml_attribute const order = pixels.attribute("DimensionOrder")) image.order = order.value();
    for (pugi::xml_node const& channel : pixels.children("Channel"))
        image.channels.push_back({channel.attribute("Name").value(), colourOf(channel)});
    for (pugi::xml_node const& data : pixels.children("TiffData"))
        image.blocks.push_back(blockOf(data, root.attribute("UUID").value()));
    image.millimetresX = millimetresOf(pixels, "PhysicalSizeX");
    image.millimetresY = millimetresOf(pixels, "PhysicalSizeY");
    return image;
}
