// The program's own filters, in a backend with the program's registry.
#include "host/channels/ChannelMixFilter.h"

#include "conformance/Verification.h"
#include "conformance/channels/HostFilterChecks.h"
#include "gles3renderbackend/Gl.h"
#include "gles3renderbackend/Gles3RenderBackend.h"
#include "host/channels/BackdropFilter.h"
#include "host/channels/HostFilters.h"
#include "host/filter/FilterRunner.h"
#include "renderbackend/RenderBackendInstance.h"
#include "renderbackend/VelmoraException.h"
#include "tests/gles3renderbackend/BackendFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;
using TablePtr = std::shared_ptr<ChannelTable const>;

class HostFiltersGLTest : public ::testing::Test {
protected:
    std::shared_ptr<RenderBackendInstance> instance() { return backend_.createInstance(surface_); }

    static int longestTexels() {
        GLint size = 0;
        std::array<GLint, 2> viewport{};
        glGetIntegerv(GL_MAX_TEXTURE_SIZE, &size);
        glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport.data());
        return std::min({size, viewport[0], viewport[1]});
    }

private:
    backendtest::Surface surface_{16, 16};
    Gles3RenderBackend backend_{hostfilters::registry(), RenderBackend::RGBA32, 1'000'000};
};

TEST_F(HostFiltersGLTest, EveryFilterIsExact) {
    conformance::TexelRunner runner(instance());
    for (auto const& [name, check] : conformance::hostFilterChecks()) {
        conformance::Trial trial(runner, {conformance::Depth::kThorough, longestTexels()});
        check(trial);
        EXPECT_GT(trial.tally().pixels, 65536U) << name;
        EXPECT_EQ(trial.tally().differingBytes, 0U) << name << ": " << trial.tally().firstDifference;
    }
}

TEST_F(HostFiltersGLTest, ABackdropNeedsItsColour) {
    FilterRunner runner(instance());
    OwnedTarget const picture = runner.upload(SampleLayout::kRgba8, {1, 1}, {0, 0, 0, 0});
    OwnedTarget const result = runner.target(SampleLayout::kRgba8, {1, 1});
    EXPECT_THROW(
        runner.run(runner.prepared(BackdropFilter::description()), {{picture.id(), 0, 0, false}}, {1, 1}, result),
        VelmoraException);
}

// A table that shows every code in one grey.
TablePtr plain(std::uint8_t grey) {
    ColourMap map{};
    map.fill({grey, grey, grey});
    return std::make_shared<ChannelTable>(SampleCodes(SampleType::Unsigned8, {}, {}), map);
}

class Mixing {
public:
    explicit Mixing(std::shared_ptr<RenderBackendInstance> const& instance)
        : runner_(instance),
          codes_(runner_.upload(SampleLayout::kRgba8, {1, 1}, {0, 0, 0, 0})),
          mixture_(runner_.upload(SampleLayout::kRgba8, {1, 1}, {0, 0, 0, 0})),
          result_(runner_.target(SampleLayout::kRgba8, {1, 1})) {}

    void run(SingleFilterParameters const& params) {
        runner_.run(runner_.prepared(ChannelMixFilter::description()),
                    {{codes_.id(), 0, 0, false}, {mixture_.id(), 0, 0, false}}, {1, 1}, result_, params);
    }
    Bytes mixed(TablePtr const& first, TablePtr const& second) {
        ChannelMixParams params;
        params.first = first;
        params.second = second;
        run(params);
        return runner_.read(result_, SampleLayout::kRgba8, {0, 0, 1, 1});
    }

private:
    FilterRunner runner_;
    OwnedTarget codes_;
    OwnedTarget mixture_;
    OwnedTarget result_;
};

// More than are kept on the GPU, forwards and backwards: all are the right ones.
TEST_F(HostFiltersGLTest, TablesThatWentAreUploadedAgain) {
    Mixing mixing(instance());
    std::vector<TablePtr> tables;
    for (size_t i = 0; i < ChannelMixFilter::kTablesOnGpu + 5; ++i)
        tables.push_back(plain(static_cast<std::uint8_t>(i)));
    auto const nothing = std::make_shared<ChannelTable>(ChannelTable::nothing());
    for (int round = 0; round < 2; ++round) {
        for (size_t i = 0; i < tables.size(); ++i) {
            auto const grey = static_cast<std::uint8_t>(i);
            EXPECT_EQ(mixing.mixed(tables[i], nothing), (Bytes{grey, grey, grey, 255}));
        }
        for (size_t i = tables.size(); i-- > 0;) {
            auto const grey = static_cast<std::uint8_t>(i);
            EXPECT_EQ(mixing.mixed(nothing, tables[i]), (Bytes{grey, grey, grey, 255}));
        }
    }
}

TEST_F(HostFiltersGLTest, OneTableMayServeBothChannels) {
    Mixing mixing(instance());
    TablePtr const table = plain(100);
    EXPECT_EQ(mixing.mixed(table, table), (Bytes{200, 200, 200, 255}));
}

TEST_F(HostFiltersGLTest, WithoutItsTablesItIsRefused) {
    Mixing mixing(instance());
    EXPECT_THROW(mixing.run(SingleFilterParameters()), VelmoraException);
    EXPECT_THROW(mixing.mixed(plain(1), nullptr), VelmoraException);
    EXPECT_THROW(mixing.mixed(nullptr, plain(1)), VelmoraException);
    EXPECT_EQ(mixing.mixed(plain(1), plain(2)), (Bytes{3, 3, 3, 255})) << "and runs again with them";
}

TEST_F(HostFiltersGLTest, ABackendWithoutTheRegistryDoesNotKnowIt) {
    backendtest::Surface const surface{16, 16};
    Gles3RenderBackend plainBackend(RenderBackend::RGBA32, 1000);
    auto const without = plainBackend.createInstance(surface);
    Filter filter = ChannelMixFilter::description();
    EXPECT_THROW(without->createFilterInstance(filter), VelmoraException);
}

} // namespace
