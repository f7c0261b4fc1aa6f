#pragma once

#include "renderbackend/Filter.h"
#include "renderbackend/RenderBackendInstance.h"
#include "renderbackend/RenderContext.h"

#include <cstddef>
#include <memory>
#include <typeinfo>
#include <utility>
#include <vector>

struct FixedContext : RenderContext {
    size_t width() const override { return 640; }
    size_t height() const override { return 480; }
};

/// An instance that overrides only pure functions. It records the filter calls; all other operations are empty.
class MinimalInstance : public RenderBackendInstance {
public:
    struct Execution {
        Filter const* filter = nullptr;
        std::vector<FilterSource> sources;
        std::vector<size_t> numbers; ///< inputW, inputH, destination, clip left, right, top, bottom
        SingleFilterParameters const* params = nullptr;
        std::vector<size_t> offset;
    };
    using Bytes = std::vector<unsigned char>;
    using Sizes = std::vector<size_t>;
    using EnvelopeData = std::vector<std::pair<std::vector<unsigned short>, std::vector<std::vector<unsigned int>>>>;

    using RenderBackendInstance::context;
    using RenderBackendInstance::id;
    using RenderBackendInstance::RenderBackendInstance;

    std::vector<Execution> executions;
    std::vector<Filter*> instantiated;

    std::type_info const& pixelTypeid() const override { return typeid(unsigned char); }
    size_t pixelSize() const override { return 1; }
    size_t numComponents() const override { return 4; }
    void clear(size_t, Sizes const&) override {}
    void clearRect(size_t, Sizes const&, Sizes const&) override {}
    void drawTiles(size_t, Filter const&, Sizes const&, Sizes const&, Sizes const&, std::vector<Sizes> const&,
                   Sizes const&, Sizes const&) override {}
    size_t getPixels(void*, size_t, size_t, Sizes const&) const override { return 0; }
    Bytes getPixels(size_t, Sizes const&) override { return {}; }
    size_t getPixelsBufferSize(size_t, Sizes const&) const override { return 0; }
    void setTile(size_t, Bytes const&, Sizes const&, size_t) override {}
    bool tileSet(size_t) const override { return false; }
    void lockTile(size_t) override {}
    void unlockTile(size_t) override {}
    std::shared_ptr<DataEnvelopes const> dataEnvelopes(Bytes const&) const override { return {}; }
    void dataEnvelopes(Bytes const&, EnvelopeData const&) override {}
    bool dataEnvelopesSet(Bytes const&) const override { return false; }
    void lockDataEnvelopes(Bytes const&) override {}
    void unlockDataEnvelopes(Bytes const&) override {}
    size_t createTarget(Sizes const&, size_t, bool, ImageFiltering, ImageFormatType) override { return 1; }
    void finalizeDrawSequence() override {}
    size_t freeSlots() const override { return 0; }
    bool targetReady(size_t) const override { return true; }
    Sizes targetSize(size_t) override { return {0, 0}; }
    Sizes targetAlignment(size_t) override { return {1, 1}; }
    ImageFiltering targetFiltering(size_t) const override { return RenderBackend::NEAREST; }
    void eraseTarget(size_t) override {}
    size_t eraseTiles(size_t, size_t) override { return 0; }
    size_t eraseTile(size_t) override { return 0; }
    void clearTargets() override {}
    void waitForTarget(size_t) override {}
    size_t clearTiles() override { return 0; }
    void executeFilter(Filter const& filter, std::vector<FilterSource> const& sources, size_t inputW, size_t inputH,
                       size_t destination, size_t clipLeft, size_t clipRight, size_t clipTop, size_t clipBottom,
                       SingleFilterParameters const& params, Sizes const& offset) override {
        executions.push_back({&filter,
                              sources,
                              {inputW, inputH, destination, clipLeft, clipRight, clipTop, clipBottom},
                              &params,
                              offset});
    }
    void createFilterInstance(Filter& filter) override {
        instantiated.push_back(&filter);
        // As in a real instance: the shader's own description, without an instance, is assigned to the filter.
        Filter adjusted(filter.name(), 0, 0, 0, 0, 0, 1, 0, 1, 1, 1, 1, 1, 1, RenderBackend::NEAREST);
        adjusted.setInstanceKey(std::make_shared<size_t>(7));
        filter = adjusted;
    }
    void destroyFilterInstance(Filter&) override {}
    void maskRange(size_t, size_t, Filter const&, Sizes const&, SingleFilterParameters const&) override {}
};
