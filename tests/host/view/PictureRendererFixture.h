#pragma once

#include "gles3renderbackend/Gles3RenderBackend.h"
#include "host/Geometry.h"
#include "host/channels/HostFilters.h"
#include "host/gl/SurfacelessContext.h"
#include "host/view/PictureRenderer.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

/// A store and an instance that draws it.
class PictureRendererFixture : public testing::Test {
protected:
    using Bytes = std::vector<std::uint8_t>;

    StoreInfo import(testpictures::Picture const& picture, size_t tileSize,
                     std::optional<size_t> levels = std::nullopt) const;

    /// Interleaved bytes of a region of a level.
    Bytes rendered(size_t level, Region const& region, std::vector<enhancement::Step> const& steps = {}) const;
    Bytes renderedWhole(StoreInfo const& info, size_t level) const;

    /// Imports the picture and compares each level with what the formulas give.
    void expectEveryLevel(testpictures::Picture const& picture, size_t tileSize,
                          std::optional<size_t> levels = std::nullopt) const;

    std::string path() const { return folder_.path("a.vlm"); }

    static constexpr size_t kTileBudgetBytes = 64 * 1000 * 1000;

    TemporaryFolder folder_;
    SurfacelessContext context_;
    Gles3RenderBackend backend_{hostfilters::registry(), RenderBackend::RGBA32, kTileBudgetBytes};
    std::shared_ptr<RenderBackendInstance> instance_ = backend_.createInstance(context_);
};
