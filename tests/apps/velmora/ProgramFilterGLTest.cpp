// The program's filters, byte for byte as chains of plain integer models on the whole picture.
#include "host/Geometry.h"
#include "reference/Blit.h"
#include "reference/Clahe.h"
#include "reference/ColourMatrix.h"
#include "reference/Integers.h"
#include "reference/Sharpness16.h"
#include "reference/Sharpness8.h"
#include "reference/TableLookup.h"
#include "reference/Truncate16.h"
#include "reference/YCoCgR.h"
#include "tests/apps/velmora/Process.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestImages.h"

#include <gtest/gtest.h>

#include <functional>

using reference::Texels;
using testimages::Pixels;

namespace {

// More than one part in each direction, and not a multiple of any part size.
constexpr size_t kWidth = 1117;
constexpr size_t kHeight = 1043;

using Model = std::function<Texels(Texels const&)>;
using Words = std::vector<std::string>;

Texels texelsOf(Pixels const& pixels) {
    Texels texels(static_cast<int>(pixels.width), static_cast<int>(pixels.height));
    bool const grey = pixels.bands <= 2;
    for (size_t i = 0; i < pixels.width * pixels.height; ++i) {
        for (size_t c = 0; c < 3; ++c)
            texels.bytes[4 * i + c] = pixels.samples[i * pixels.bands + (grey ? 0 : c)];
        texels.bytes[4 * i + 3] = 255;
    }
    return texels;
}

// Alpha is that of `original`.
Pixels pixelsOf(Texels const& texels, size_t bands, Pixels const& original) {
    Pixels pixels{static_cast<size_t>(texels.width), static_cast<size_t>(texels.height), bands, {}};
    size_t const colours = bands <= 2 ? 1 : 3;
    for (size_t i = 0; i < texels.bytes.size() / 4; ++i) {
        for (size_t c = 0; c < colours; ++c)
            pixels.samples.push_back(texels.bytes[4 * i + c]);
        if (bands > colours) pixels.samples.push_back(original.samples[(i + 1) * original.bands - 1]);
    }
    return pixels;
}

Texels sharpened(Texels const& image, double gain) {
    return reference::sharpness8(image, gain, 0);
}

Texels equalised(Texels const& image, double clip) {
    Texels deep = reference::rgba8ToYCoCg16(image);
    reference::Planes3 planes = reference::unpackThreeChannel16(deep);
    // Luma is the first of four components; the others pass through.
    std::vector<std::int16_t> samples;
    for (std::int32_t const y : planes[0].samples)
        samples.insert(samples.end(), {static_cast<std::int16_t>(y), 0, 0, 0});
    auto const result = reference::clahe(samples, image.width, image.height, clip, 0, 0);
    for (size_t i = 0; i < planes[0].samples.size(); ++i)
        planes[0].samples[i] = result[4 * i];
    return reference::yCoCg16ToRgba8(reference::packThreeChannel16(planes));
}

Texels truncated(Texels image, std::uint64_t bits, bool rounding) {
    for (size_t i = 0; i < image.bytes.size(); ++i) {
        if (i % 4 != 3) image.bytes[i] = reference::clampToByte(reference::truncate16(image.bytes[i], bits, rounding));
    }
    return image;
}

Texels gammaMapped(Texels const& image, double gamma, std::uint64_t black, std::uint64_t white) {
    return reference::tableLookup8(image, reference::blackWhiteGamma8Table(gamma, black, white));
}

// Column-major, 1024 is 1.0: rows 0.5 0.25 0, 0 1 -0.125, 0.75 0 0.5.
constexpr reference::Matrix3 kMatrix = {512, 0, 768, 256, 1024, 0, 0, -128, 512};
char const* const kMatrixText = "0.5,0.25,0,0,1,-0.125,0.75,0,0.5";

class ProgramFilterGLTest : public testing::Test {
protected:
    void writePicture(size_t bands, size_t width = kWidth, size_t height = kHeight) {
        original_ = testimages::pattern8(width, height, bands);
        testimages::writePattern8(file(), "", width, height, bands);
    }

    Pixels rendered(Words const& filters, std::string const& region = "") const {
        std::string const view = folder_.path("view.png");
        Words words = {"render", file(), "-o", view, "--force"};
        if (!region.empty()) words.insert(words.end(), {"-r", region});
        words.insert(words.end(), filters.begin(), filters.end());
        auto const result = runVelmora(words);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return testimages::readByVips(view);
    }

    void expectModel(Words const& filters, Model const& model, size_t bands) const {
        EXPECT_EQ(testimages::difference(rendered(filters), pixelsOf(model(texelsOf(original_)), bands, original_)), "")
            << filters[0];
    }

    std::string file() const { return folder_.path("a.png"); }

    TemporaryFolder folder_;
    Pixels original_;
};

} // namespace

TEST_F(ProgramFilterGLTest, EachFilterOfAnRgbPictureIsExactUpToItsEdges) {
    writePicture(3);
    expectModel(
        {"--sharpen", "0.7"}, [](Texels const& image) { return sharpened(image, 0.7); }, 3);
    expectModel(
        {"--matrix", kMatrixText}, [](Texels const& image) { return matrix8(image, kMatrix, 1.0); }, 3);
    expectModel(
        {"--matrix", std::string(kMatrixText) + ",-0.5"},
        [](Texels const& image) { return matrix8(image, kMatrix, -0.5); }, 3);
    expectModel(
        {"--gamma", "1.8,100,3000"}, [](Texels const& image) { return gammaMapped(image, 1.8, 100, 3000); }, 3);
    expectModel(
        {"--srgb"}, [](Texels const& image) { return tableLookup8(image, reference::srgbTable(8)); }, 3);
    expectModel(
        {"--clahe", "3"}, [](Texels const& image) { return equalised(image, 3.0); }, 3);
    expectModel(
        {"--truncate", "3"}, [](Texels const& image) { return truncated(image, 3, false); }, 3);
    expectModel(
        {"--truncate", "5,round"}, [](Texels const& image) { return truncated(image, 5, true); }, 3);
}

TEST_F(ProgramFilterGLTest, FiltersRunInTheOrderGiven) {
    writePicture(3, 211, 150);
    expectModel(
        {"--sharpen", "1", "--gamma", "1.8,100,3000"},
        [](Texels const& image) { return gammaMapped(sharpened(image, 1.0), 1.8, 100, 3000); }, 3);
    expectModel(
        {"--gamma", "1.8,100,3000", "--sharpen", "1"},
        [](Texels const& image) { return sharpened(gammaMapped(image, 1.8, 100, 3000), 1.0); }, 3);
}

TEST_F(ProgramFilterGLTest, FilterGivenTwiceRunsTwice) {
    writePicture(3, 211, 150);
    expectModel(
        {"--sharpen", "0.5", "--srgb", "--sharpen=0.25", "--srgb"},
        [](Texels const& image) {
            reference::ByteTable const srgb = reference::srgbTable(8);
            return tableLookup8(sharpened(tableLookup8(sharpened(image, 0.5), srgb), 0.25), srgb);
        },
        3);
}

TEST_F(ProgramFilterGLTest, FiltersThatReadAroundAPixelAgreeAcrossTheirParts) {
    writePicture(3);
    expectModel(
        {"--clahe", "2", "--sharpen", "1"}, [](Texels const& image) { return sharpened(equalised(image, 2.0), 1.0); },
        3);
    expectModel(
        {"--sharpen", "1", "--clahe", "2"}, [](Texels const& image) { return equalised(sharpened(image, 1.0), 2.0); },
        3);
}

TEST_F(ProgramFilterGLTest, RegionIsThatPartOfTheWholePictureEnhanced) {
    writePicture(3);
    Words const filters = {"--clahe", "4", "--sharpen", "1", "--truncate", "2"};
    Pixels const whole = rendered(filters);
    for (Region const& region : {Region{0, 0, 1, 1}, Region{839, 838, 3, 5}, Region{kWidth - 1, kHeight - 1, 1, 1},
                                 Region{41, 37, 700, 13}, Region{800, 1, 317, 1042}})
        EXPECT_EQ(testimages::difference(rendered(filters, toText(region)),
                                         testimages::crop(whole, region.x, region.y, region.width, region.height)),
                  "")
            << toText(region);
}

TEST_F(ProgramFilterGLTest, AlphaComesOutAsItWentIn) {
    for (size_t const bands : {2U, 4U}) {
        writePicture(bands, 90, 70);
        expectModel(
            {"--sharpen", "1"}, [](Texels const& image) { return sharpened(image, 1.0); }, bands);
        expectModel(
            {"--clahe", "2"}, [](Texels const& image) { return equalised(image, 2.0); }, bands);
    }
}

TEST_F(ProgramFilterGLTest, GreyStaysGreyUnlessAMatrixColoursIt) {
    writePicture(1, 90, 70);
    expectModel(
        {"--sharpen", "1"}, [](Texels const& image) { return sharpened(image, 1.0); }, 1);
    expectModel(
        {"--matrix", kMatrixText}, [](Texels const& image) { return matrix8(image, kMatrix, 1.0); }, 3);
    writePicture(2, 90, 70);
    expectModel(
        {"--matrix", kMatrixText}, [](Texels const& image) { return matrix8(image, kMatrix, 1.0); }, 4);
}

TEST_F(ProgramFilterGLTest, PicturesSmallerThanTheReachOfAFilterAreExact) {
    for (auto const& [width, height] : {std::pair<size_t, size_t>{1, 1}, {2, 1}, {1, 3}, {3, 90}, {41, 40}}) {
        writePicture(3, width, height);
        expectModel(
            {"--sharpen", "2", "--clahe", "3"},
            [](Texels const& image) { return equalised(sharpened(image, 2.0), 3.0); }, 3);
    }
}

namespace {

// Pictures of 16 bits: the chain starts with the upper 15.
class ProgramDeepFilterGLTest : public ProgramFilterGLTest {
protected:
    using DeepModel = std::function<Texels(reference::Planes3 const& codesOf15Bits)>;

    void writeDeepPicture(size_t bands, size_t width, size_t height) {
        bands_ = bands;
        width_ = width;
        height_ = height;
        testimages::writePattern16(file(), "", width, height, bands);
    }

    reference::Planes3 codes() const {
        reference::Planes3 planes;
        for (size_t channel = 0; channel < 3; ++channel) {
            planes[channel] = reference::Plane(static_cast<int>(width_), static_cast<int>(height_));
            for (size_t i = 0; i < width_ * height_; ++i)
                planes[channel].samples[i] =
                    testimages::sample16(i % width_, i / width_, bands_ == 1 ? 0 : channel) / 2;
        }
        return planes;
    }

    void expectDeepModel(Words const& filters, DeepModel const& model) const {
        EXPECT_EQ(testimages::difference(rendered(filters), pixelsOf(model(codes()), bands_, {})), "") << filters[0];
    }

    size_t bands_ = 0;
    size_t width_ = 0;
    size_t height_ = 0;
};

Texels lookedUp(reference::Planes3 const& planes, reference::ByteTable const& table) {
    return tableLookup16(reference::packThreeChannel16(planes), table);
}

// The upper byte of a value of `depth` bits.
Texels shown(reference::Planes3 const& planes, unsigned depth) {
    reference::ByteTable table(size_t{1} << depth);
    for (size_t code = 0; code < table.size(); ++code)
        table[code] = static_cast<std::uint8_t>(code >> (depth - 8));
    return lookedUp(planes, table);
}

reference::Planes3 sharpened16(reference::Planes3 planes, int gainIn32nds) {
    for (auto& plane : planes)
        plane = reference::sharpness16(plane, gainIn32nds, 5);
    return planes;
}

// Divided by a power of two and rounded.
reference::Planes3 atDepth(reference::Planes3 planes, unsigned from, unsigned to) {
    for (auto& plane : planes) {
        for (auto& sample : plane.samples)
            sample = static_cast<std::int32_t>(reference::roundDivAwayFromZero(sample, 1 << (from - to)));
    }
    return planes;
}

} // namespace

TEST_F(ProgramDeepFilterGLTest, EachFilterIsExact) {
    for (size_t const bands : {1U, 3U}) {
        writeDeepPicture(bands, 1051, 45);
        expectDeepModel({"--gamma", "2.2,1000,50001"}, [](reference::Planes3 const& planes) {
            return lookedUp(planes, reference::gammaTable(15, 2.2, 500, 25000));
        });
        expectDeepModel({"--srgb"},
                        [](reference::Planes3 const& planes) { return lookedUp(planes, reference::srgbTable(15)); });
        for (auto const& [gain, gainIn32nds] : std::vector<std::pair<std::string, int>>{
                 {"2", 64}, {"0.5", 16}, {"-0.73", -23}, {"1.99", 63}, {"0.03", 0}})
            expectDeepModel({"--sharpen", gain}, [gainIn32nds = gainIn32nds](reference::Planes3 const& planes) {
                return shown(sharpened16(atDepth(planes, 15, 10), gainIn32nds), 10);
            });
        expectDeepModel({"--clahe", "3"},
                        [](reference::Planes3 const& planes) { return equalised(shown(planes, 15), 3.0); });
        // Nine bits of the file's 16 are eight of the chain's 15.
        expectDeepModel({"--truncate", "9,round"}, [](reference::Planes3 planes) {
            for (auto& plane : planes) {
                for (auto& sample : plane.samples)
                    sample = reference::truncate16(sample, 8, true);
            }
            return shown(planes, 15);
        });
    }
}

TEST_F(ProgramDeepFilterGLTest, MatrixIsExactWithRoomForItsSums) {
    writeDeepPicture(3, 300, 45);
    expectDeepModel({"--matrix", kMatrixText}, [](reference::Planes3 const& planes) {
        Texels const deep = reference::packThreeChannel16(atDepth(planes, 15, 12));
        return shown(reference::unpackThreeChannel16(matrix16(deep, kMatrix, 1.0)), 12);
    });
    // Sums of 7 + 7 + 7 times a sample need five bits: samples of 9.
    expectDeepModel({"--matrix", "7,7,7,0,1,0,0,0,1"}, [](reference::Planes3 const& planes) {
        Texels const deep = reference::packThreeChannel16(atDepth(planes, 15, 9));
        reference::Matrix3 const matrix = {7168, 0, 0, 7168, 1024, 0, 7168, 0, 1024};
        return shown(reference::unpackThreeChannel16(matrix16(deep, matrix, 1.0)), 9);
    });
}

TEST_F(ProgramDeepFilterGLTest, ChainsGoOnIn8BitsAfterATable) {
    writeDeepPicture(3, 203, 60);
    expectDeepModel({"--sharpen", "1", "--gamma", "2.2,0,65535", "--sharpen", "0.5", "--truncate", "1"},
                    [](reference::Planes3 const& planes) {
                        reference::Planes3 const sharp = sharpened16(atDepth(planes, 15, 10), 32);
                        Texels const toned = lookedUp(sharp, reference::gammaTable(10, 2.2, 0, 1023));
                        return truncated(sharpened(toned, 0.5), 1, false);
                    });
}
