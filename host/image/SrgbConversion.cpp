#include "host/image/SrgbConversion.h"

#include "host/PlainText.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <lcms2.h>
#include <new>
#include <utility>

namespace {

constexpr size_t kPixelsAtOnce = 1 << 20; // Little CMS counts with 32 bits
constexpr int kLatticeSteps = 8;          // per colour, of the colours by which sRGB is told
constexpr size_t kNameBytes = 256;

struct ProfileCloser {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, ProfileCloser>;

struct CurveFreer {
    void operator()(cmsToneCurve* curve) const { cmsFreeToneCurve(curve); }
};

// IEC 61966-2-1.
Profile greyOfSrgb() {
    std::array<double, 5> const parameters{2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    std::unique_ptr<cmsToneCurve, CurveFreer> const curve(cmsBuildParametricToneCurve(nullptr, 4, parameters.data()));
    return Profile(curve ? cmsCreateGrayProfile(cmsD50_xyY(), curve.get()) : nullptr);
}

std::string nameOf(Profile const& profile) {
    std::array<char, kNameBytes> name{};
    cmsGetProfileInfoASCII(profile.get(), cmsInfoDescription, "en", "US", name.data(), name.size() - 1);
    return printableText(name.data());
}

cmsUInt32Number formatOf(SampleFormat const& layout) {
    auto const sampleBytes = static_cast<unsigned>(bytesOf(layout.type));
    auto const space = static_cast<unsigned>(layout.colours == 1 ? PT_GRAY : PT_RGB);
    return COLORSPACE_SH(space) | CHANNELS_SH(static_cast<unsigned>(layout.colours)) | BYTES_SH(sampleBytes) |
           EXTRA_SH(static_cast<unsigned>(layout.alpha ? 1 : 0));
}

std::string articled(std::string const& name) {
    return name.empty() ? "its colour profile" : "its colour profile '" + name + "'";
}

// Why the profile of a picture cannot be followed; empty: it can.
std::string obstacleTo(ImageFacts const& facts) {
    SampleType const type = facts.layout.type;
    if (!facts.layout.isPlain()) return "is left out: the bands are not grey or RGB";
    if (type != SampleType::Unsigned8 && type != SampleType::Unsigned16)
        return "is left out for samples of " + toText(type);
    if (facts.nodata) return "is left out: a sample stands for no data";
    return "";
}

// But for rounding.
bool isNearly(std::vector<std::uint8_t> const& samples, std::vector<std::uint8_t> const& others) {
    return std::equal(samples.begin(), samples.end(), others.begin(), others.end(),
                      [](int a, int b) { return std::abs(a - b) <= 1; });
}

} // namespace

// Of samples in place.
class SrgbConversion::Transform {
public:
    // What Little CMS makes quicker by tables is exact enough for colours of 8 bits alone.
    Transform(Profile const& from, Profile const& to, SampleFormat const& layout)
        : transform_(cmsCreateTransform(from.get(), formatOf(layout), to.get(), formatOf(layout),
                                        INTENT_RELATIVE_COLORIMETRIC,
                                        cmsFLAGS_NOCACHE | (isTabled(layout) ? 0 : cmsFLAGS_NOOPTIMIZE))) {}
    ~Transform() {
        if (transform_ != nullptr) cmsDeleteTransform(transform_);
    }
    Transform(Transform const&) = delete;
    Transform& operator=(Transform const&) = delete;

    bool isUsable() const { return transform_ != nullptr; }
    void run(void* samples, size_t pixels) const {
        cmsDoTransform(transform_, samples, samples, static_cast<cmsUInt32Number>(pixels));
    }

    // All greys of 8 bits, and colours over all of the cube.
    static std::vector<std::uint8_t> lattice(size_t colours) {
        std::vector<std::uint8_t> samples;
        for (int grey = 0; grey <= 0xff; ++grey)
            samples.insert(samples.end(), colours, static_cast<std::uint8_t>(grey));
        auto const step = [](int index) { return static_cast<std::uint8_t>(index * 0xff / kLatticeSteps); };
        for (int red = 0; colours == 3 && red <= kLatticeSteps; ++red)
            for (int green = 0; green <= kLatticeSteps; ++green)
                for (int blue = 0; blue <= kLatticeSteps; ++blue)
                    samples.insert(samples.end(), {step(red), step(green), step(blue)});
        return samples;
    }

    // What the lattice becomes; empty: Little CMS cannot convert it.
    static std::vector<std::uint8_t> convertedLattice(Profile const& from, Profile const& to, size_t colours) {
        SampleFormat layout;
        layout.bands = layout.colours = colours;
        Transform const transform(from, to, layout);
        if (!transform.isUsable()) return {};
        std::vector<std::uint8_t> samples = lattice(colours);
        transform.run(samples.data(), samples.size() / colours);
        return samples;
    }

private:
    static bool isTabled(SampleFormat const& layout) {
        return layout.colours == 3 && layout.type == SampleType::Unsigned8;
    }

    cmsHTRANSFORM transform_;
};

SrgbConversion::SrgbConversion(std::unique_ptr<Transform> transform, size_t pixelBytes)
    : transform_(std::move(transform)), pixelBytes_(pixelBytes) {}

SrgbConversion::~SrgbConversion() = default;

SrgbConversion::Choice SrgbConversion::of(ImageFacts const& facts) {
    std::vector<std::uint8_t> const& bytes = facts.iccProfile;
    if (bytes.empty() || !facts.colourSpace.empty()) return {};
    Profile const from(cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size())));
    if (!from) return {nullptr, "", "its colour profile is damaged"};
    Choice choice{nullptr, nameOf(from), ""};
    std::string const obstacle = obstacleTo(facts);
    if (!obstacle.empty()) {
        choice.reason = articled(choice.profile) + " " + obstacle;
        return choice;
    }
    bool const isGrey = facts.layout.colours == 1;
    if (cmsGetColorSpace(from.get()) != (isGrey ? cmsSigGrayData : cmsSigRgbData)) {
        choice.reason = articled(choice.profile) + " is not one of " + (isGrey ? "grey" : "RGB");
        return choice;
    }
    Profile const to = isGrey ? greyOfSrgb() : Profile(cmsCreate_sRGBProfile());
    if (!to) throw std::bad_alloc();
    auto transform = std::make_unique<Transform>(from, to, facts.layout);
    if (!transform->isUsable()) {
        choice.reason = articled(choice.profile) + " cannot be converted to sRGB";
        return choice;
    }
    std::vector<std::uint8_t> converted = Transform::convertedLattice(from, to, facts.layout.colours);
    if (isNearly(converted, Transform::lattice(facts.layout.colours))) return choice;
    std::unique_ptr<SrgbConversion> conversion(new SrgbConversion(std::move(transform), facts.layout.pixelBytes()));
    if (isGrey && facts.layout.type == SampleType::Unsigned8) conversion->greys_ = std::move(converted);
    choice.conversion = std::move(conversion);
    return choice;
}

void SrgbConversion::convert(std::uint8_t* samples, size_t pixels) const {
    if (!greys_.empty()) {
        for (size_t i = 0; i < pixels * pixelBytes_; i += pixelBytes_)
            samples[i] = greys_[samples[i]];
        return;
    }
    for (size_t done = 0; done < pixels; done += kPixelsAtOnce)
        transform_->run(samples + done * pixelBytes_, std::min(kPixelsAtOnce, pixels - done));
}
