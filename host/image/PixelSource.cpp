#include "host/image/PixelSource.h"

#include "host/HostError.h"

PixelSource::~PixelSource() = default;

void PixelSource::whileReading(std::function<void()> const&) {}

void PixelSource::read(Region const& region, std::vector<std::uint8_t>& pixels) {
    if (!liesIn(region, {width(), height()}))
        throw HostError(HostError::Kind::RegionOutside, "the region " + toText(region) + " leaves the picture of " +
                                                            std::to_string(width()) + " x " + std::to_string(height()) +
                                                            " pixels; choose one inside");
    pixels.resize(region.width * region.height * bands() * sampleBytes());
    readInto(region, pixels.data());
}
