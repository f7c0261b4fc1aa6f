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

    // What each grey of 8 bits becomes.
    static std::vector<std::uint8_t> greys(Profile const& from, Profile const& to) {
        SampleFormat layout;
        layout.bands = layout.colours = 1;
        std::vector<std::uint8_t> made = lattice(1);
        Transform const transform(from, to, layout);
        if (transform.isUsable()) transform.run(made.data(), made.size());
        return made;
    }

    // Whether colours of 8 bits stay what they are, but for rounding.
    static bool changesNothing(Profile const& from, Profile const& to, size_t colours) {
        SampleFormat layout;
        layout.bands = layout.colours = colours;
        Transform const transform(from, to, layout);
        if (!transform.isUsable()) return false;
        std::vector<std::uint8_t> const before = lattice(colours);
        std::vector<std::uint8_t> after = before;
        transform.run(after.data(), after.size() / colours);
        return std::equal(before.begin(), before.end(), after.begin(),
                          [](int a, int b) { return std::abs(a - b) <= 1; });
    }

private:
    // All greys, and colours over all of the cube.
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
    if (Transform::changesNothing(from, to, facts.layout.colours)) return choice;
    std::unique_ptr<SrgbConversion> conversion(new SrgbConversion(std::move(transform), facts.layout.pixelBytes()));
    if (isGrey && facts.layout.type == SampleType::Unsigned8) conversion->greys_ = Transform::greys(from, to);
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
