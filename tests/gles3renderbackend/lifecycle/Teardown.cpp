#include "tests/gles3renderbackend/lifecycle/Teardown.h"

#include "gles3renderbackend/Gles3RenderBackend.h"
#include "host/filter/FilterDescriptions.h"
#include "host/filter/OwnedTarget.h"
#include "renderbackend/ConcurrentStagingBuffer.h"
#include "renderbackend/DataEnvelopes.h"
#include "renderbackend/Filter.h"
#include "renderbackend/FilterParameters.h"
#include "renderbackend/RenderContext.h"
#include "renderbackend/VelmoraException.h"
#include "tests/support/GlFaultPlan.h"
#include "tests/support/LongRun.h"
#include "tests/support/NoiseBytes.h"
#include "tests/support/Watchdog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

namespace lifecycle {

namespace {

using Sizes = std::vector<size_t>;
using Instance = std::shared_ptr<RenderBackendInstance>;
using Staged = std::unique_ptr<ConcurrentStagingBuffer>;

constexpr char const* kOneInstance =
    "#Name:Can only create one instance per backend for now#Location:std::shared_ptr<RenderBackendInstance> "
    "Gles3RenderBackend::createInstance(RenderContext const& context)";
constexpr std::chrono::seconds kLongestTeardown{60};

struct Surface final : RenderContext {
    size_t width() const override { return 16; }
    size_t height() const override { return 16; }
};

Surface const kSurface;
Sizes const kTile = {6, 5, 3};
Bytes const kEnvelopes = {1, 2};

Bytes pixels(std::uint32_t seed) {
    return noiseBytes(6 * 5 * 3, seed);
}

Staged reserved(RenderBackendInstance& instance, size_t tile) {
    return instance.concurrentStagingBuffer(tile, RenderBackend::TILE, kTile);
}

Staged written(RenderBackendInstance& instance, size_t tile) {
    Staged buffer = reserved(instance, tile);
    buffer->write(pixels(7), 0);
    return buffer;
}

size_t target(RenderBackendInstance& instance) {
    size_t const id = instance.createTarget({18, 5}, 32, false, RenderBackend::NEAREST, RenderBackend::RGBA32);
    instance.clear(id, {0, 0, 0});
    return id;
}

std::shared_ptr<DataEnvelopes const> storedEnvelopes(RenderBackendInstance& instance) {
    instance.dataEnvelopes(kEnvelopes, {{{}, {{2, 1}, {3, 1}, {2, 2}, {3, 2}}}});
    return std::as_const(instance).dataEnvelopes(kEnvelopes);
}

Bytes drawnBy(Gles3RenderBackend& backend) {
    auto const instance = backend.createInstance(kSurface);
    Filter blit = description::blitFilter4x8();
    instance->createFilterInstance(blit);
    instance->synchronizeConcurrentStagingBuffer(written(*instance, 1));
    instance->setTile(2, pixels(9), kTile, 0);
    size_t const canvas = target(*instance);
    instance->drawTiles(canvas, blit, {0, 17, 0, 4}, {0, 17, 0, 4}, {6, 5}, {{0, 0}, {1, 0}, {2, 0}}, {1, 2, 99}, {});
    Filter mask = description::byName("MaskFilter4x8");
    instance->createFilterInstance(mask);
    MaskFilterParams params;
    params.envelopes = std::const_pointer_cast<DataEnvelopes>(storedEnvelopes(*instance));
    size_t const masked = target(*instance);
    instance->maskRange(canvas, masked, mask, {0, 17, 0, 4}, params);
    Bytes read = instance->getPixels(canvas, {0, 18, 0, 5});
    Bytes const below = instance->getPixels(masked, {0, 18, 0, 5});
    read.insert(read.end(), below.begin(), below.end());
    return read;
}

// All parts but the context.
class Host {
public:
    Host() {
        backend_.emplace();
        instance_ = backend_->createInstance(kSurface);
        target_.emplace(instance_, target(*instance_));
        OwnedTarget const recycled(instance_, target(*instance_));
        instance_->setTile(2, pixels(9), kTile, 0);
        instance_->synchronizeConcurrentStagingBuffer(written(*instance_, 3));
        written_ = written(*instance_, 1);
        unwritten_ = reserved(*instance_, 4);
        bound_ = description::blitFilter4x8();
        bound_->bind(instance_);
        envelopes_ = storedEnvelopes(*instance_);
    }

    bool holdsInstance() const { return instance_ || bound_ || target_; }
    bool holdsEnvelopes() const { return envelopes_ != nullptr; }
    Gles3RenderBackend& backend() { return *backend_; }

    void drop(Part part) {
        switch (part) {
        case Part::Backend:
            return backend_.reset();
        case Part::Instance:
            return instance_.reset();
        case Part::StagingBuffers:
            written_.reset();
            return unwritten_.reset();
        case Part::BoundFilter:
            return bound_.reset();
        case Part::Target:
            return target_.reset();
        case Part::Envelopes:
            return envelopes_.reset();
        case Part::Context:
            return;
        }
    }

    // Into the ring, or, where the instance is gone, nowhere.
    void writeLate() { unwritten_->write(pixels(8), 0); }

private:
    std::optional<Gles3RenderBackend> backend_;
    Instance instance_;
    Staged written_;
    Staged unwritten_;
    std::optional<Filter> bound_;
    std::optional<OwnedTarget> target_;
    std::shared_ptr<DataEnvelopes const> envelopes_;
};

class Teardown {
public:
    Teardown(World const& world, Bytes const& expected) : world_(world), expected_(expected) {}

    void drop(Part part) {
        if (part == Part::Context) {
            world_.endContext();
            hasContext_ = false;
        }
        // The ring's memory went with the context, unless it went with the instance.
        if (part == Part::StagingBuffers && (hasContext_ || !host_.holdsInstance())) host_.writeLate();
        if (part == Part::Backend && hasContext_) expectNextInstance();
        host_.drop(part);
        if (hasContext_) expectNothingKept();
    }

    void end() {
        EXPECT_EQ(world_.living(), Living());
        auto& plan = GlFaultPlan::instance();
        plan.stop();
        for (auto const& function : plan.calls())
            EXPECT_EQ(function.rfind("glDelete", 0), 0U) << function << " is called without a context";
        world_.goOn();
        EXPECT_TRUE(drawn() == expected_);
    }

private:
    // Without the instance nothing lives but what a set of envelopes has.
    void expectNothingKept() const {
        Living const ofEnvelopes = host_.holdsEnvelopes() ? Living{{"buffer", 2}} : Living();
        EXPECT_EQ(world_.living() == ofEnvelopes, !host_.holdsInstance());
    }

    void expectNextInstance() {
        if (!host_.holdsInstance()) {
            EXPECT_TRUE(drawnBy(host_.backend()) == expected_) << "by the next instance of the same backend";
            return;
        }
        try {
            host_.backend().createInstance(kSurface);
            ADD_FAILURE() << "a second instance";
        } catch (VelmoraException const& failure) {
            EXPECT_STREQ(failure.what(), kOneInstance);
        }
    }

    World const& world_;
    Bytes const& expected_;
    Host host_;
    bool hasContext_ = true;
};

char const* nameOf(Part part) {
    switch (part) {
    case Part::Backend:
        return "backend";
    case Part::Instance:
        return "instance";
    case Part::StagingBuffers:
        return "staging buffers";
    case Part::BoundFilter:
        return "bound filter";
    case Part::Target:
        return "target";
    case Part::Envelopes:
        return "envelopes";
    case Part::Context:
        return "context";
    }
    return "";
}

} // namespace

std::vector<Order> orders(size_t step) {
    Order order;
    for (size_t part = 0; part < kParts; ++part)
        order.push_back(static_cast<Part>(part));
    std::vector<Order> result;
    size_t n = 0;
    do {
        if (isLongRun() || n++ % step == 0) result.push_back(order);
    } while (std::next_permutation(order.begin(), order.end()));
    return result;
}

std::string textOf(Order const& order) {
    std::string text;
    for (Part const part : order)
        text += (text.empty() ? "" : ", ") + std::string(nameOf(part));
    return text;
}

Bytes drawn() {
    Gles3RenderBackend backend;
    return drawnBy(backend);
}

void tearDown(Order const& order, World const& world, Bytes const& expected) {
    SCOPED_TRACE(textOf(order));
    backendtest::Watchdog const watchdog(textOf(order), kLongestTeardown);
    Teardown teardown(world, expected);
    for (Part const part : order)
        teardown.drop(part);
    teardown.end();
}

} // namespace lifecycle
