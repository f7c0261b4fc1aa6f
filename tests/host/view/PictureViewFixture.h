#pragma once

#include "gles3renderbackend/Gles3RenderBackend.h"
#include "host/channels/HostFilters.h"
#include "host/gl/SurfacelessContext.h"
#include "host/view/PictureView.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

/// What a frame is to show, from levels in plain memory.
namespace pictureview {

constexpr std::array<std::uint8_t, 3> kBackground = {255, 0, 255};

struct Level {
    size_t width;
    size_t height;
    size_t bands;
    std::vector<std::uint8_t> bytes;
};

std::vector<Level> levelsOf(testpictures::Picture const& picture, size_t levels);

/// RGBA pixels, each the sample where its middle lies.
std::vector<std::uint8_t> frameOf(std::vector<Level> const& levels, View const& view);

size_t backgroundPixels(std::vector<std::uint8_t> const& frame);

/// For messages.
std::string describe(View const& view);

} // namespace pictureview

/// A store and an instance that shows it.
class PictureViewFixture : public testing::Test {
protected:
    using Bytes = std::vector<std::uint8_t>;

    StoreInfo import(testpictures::Picture const& picture, size_t tileSize = 64) const;

    static PictureView::Options options();
    /// Only what a frame needs is kept: levels and decompressed tiles go at once, bands stay in the backend's cache.
    static PictureView::Options forgetful();
    static Bytes completed(PictureView& view);
    static Bytes completed(PictureView& view, View const& wanted);

    /// Until no tile is on its way: one that is to stand in may be when a view is complete.
    static void settle(PictureView& view);

    /// Somewhere, also beside the picture.
    View randomView(PictureInfo const& info);

    std::string path() const { return folder_.path("a.vlm"); }

    static constexpr size_t kTileBudgetBytes = 64 * 1000 * 1000;

    std::mt19937 random_{20};
    TemporaryFolder folder_;
    SurfacelessContext context_;
    Gles3RenderBackend backend_{hostfilters::registry(), RenderBackend::RGBA32, kTileBudgetBytes};
    std::shared_ptr<RenderBackendInstance> instance_ = backend_.createInstance(context_);
};
