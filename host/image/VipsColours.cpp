#include "host/image/VipsColours.h"

using vips::VError;
using vips::VImage;

namespace {

SampleType typeOf(VipsBandFormat format) {
    switch (format) {
    case VIPS_FORMAT_UCHAR:
        return SampleType::Unsigned8;
    case VIPS_FORMAT_CHAR:
        return SampleType::Signed8;
    case VIPS_FORMAT_USHORT:
        return SampleType::Unsigned16;
    case VIPS_FORMAT_SHORT:
        return SampleType::Signed16;
    case VIPS_FORMAT_UINT:
        return SampleType::Unsigned32;
    case VIPS_FORMAT_INT:
        return SampleType::Signed32;
    case VIPS_FORMAT_FLOAT:
        return SampleType::Float32;
    case VIPS_FORMAT_DOUBLE:
        return SampleType::Float64;
    default:
        throw VError("it has complex numbers, which are not read");
    }
}

struct Name {
    VipsInterpretation interpretation;
    char const* text;
};

// The colour spaces that occur in files; libvips converts all of them.
constexpr std::array<Name, 10> kSpaces{{{VIPS_INTERPRETATION_CMYK, "CMYK"},
                                        {VIPS_INTERPRETATION_LAB, "Lab"},
                                        {VIPS_INTERPRETATION_LABS, "Lab"},
                                        {VIPS_INTERPRETATION_LABQ, "Lab"},
                                        {VIPS_INTERPRETATION_XYZ, "XYZ"},
                                        {VIPS_INTERPRETATION_scRGB, kLinearLight},
                                        {VIPS_INTERPRETATION_YXY, "Yxy"},
                                        {VIPS_INTERPRETATION_HSV, "HSV"},
                                        {VIPS_INTERPRETATION_LCH, "LCh"},
                                        {VIPS_INTERPRETATION_CMC, "CMC"}}};

size_t coloursOf(VipsInterpretation interpretation) {
    switch (interpretation) {
    case VIPS_INTERPRETATION_B_W:
    case VIPS_INTERPRETATION_GREY16:
        return 1;
    case VIPS_INTERPRETATION_RGB:
    case VIPS_INTERPRETATION_sRGB:
    case VIPS_INTERPRETATION_RGB16:
    case VIPS_INTERPRETATION_scRGB:
        return 3;
    default:
        return 0;
    }
}

} // namespace

VImage vipscolours::unpacked(VImage const& image) {
    if (image.coding() == VIPS_CODING_RAD) return image.rad2float();
    if (image.coding() == VIPS_CODING_LABQ) return image.LabQ2Lab();
    return image;
}

void vipscolours::describe(VImage const& image, ImageFacts& facts) {
    facts.layout.width = static_cast<size_t>(image.width());
    facts.layout.height = static_cast<size_t>(image.height());
    facts.layout.bands = static_cast<size_t>(image.bands());
    facts.layout.type = typeOf(image.format());
    facts.layout.colours = coloursOf(image.interpretation());
    facts.colourSpace.clear();
    for (Name const& name : kSpaces)
        if (name.interpretation == image.interpretation()) facts.colourSpace = name.text;
    facts.convertible = !facts.colourSpace.empty();
}

VImage vipscolours::toSrgb(VImage const& image) {
    size_t const colours = coloursOf(image.interpretation());
    if (colours > 0 && image.interpretation() != VIPS_INTERPRETATION_scRGB) return image;
    auto const display = image.bands() <= 2 ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB;
    return image.colourspace(display).cast(VIPS_FORMAT_UCHAR);
}
