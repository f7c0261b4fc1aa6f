#include "tests/gles3renderbackend/faults/Scenarios.h"

#include "host/filter/FilterDescriptions.h"
#include "host/filter/OwnedFilter.h"
#include "host/filter/OwnedTarget.h"
#include "renderbackend/DataEnvelopes.h"
#include "renderbackend/FilterParameters.h"
#include "tests/support/NoiseBytes.h"

#include <array>
#include <stdexcept>
#include <utility>

namespace faults {

namespace {

constexpr size_t kRingBuffers = 4;

void append(Bytes& bytes, Bytes const& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

void append(Bytes& bytes, std::initializer_list<size_t> numbers) {
    for (size_t const number : numbers)
        bytes.push_back(static_cast<unsigned char>(number));
}

// What was erased goes for good, so that the next scenario starts from nothing.
class EmptyHands {
public:
    explicit EmptyHands(WatchedInstance& instance) : instance_(instance) {}
    EmptyHands(EmptyHands const&) = delete;
    EmptyHands& operator=(EmptyHands const&) = delete;
    ~EmptyHands() {
        instance_.clearTargets();
        instance_.clearTiles();
    }

private:
    WatchedInstance& instance_;
};

OwnedTarget target(Stage& stage, SampleLayout layout, Size const& size) {
    return {stage.shared(), stage.instance().createTarget({size.width, size.height}, samplelayout::bitsPerPixel(layout),
                                                          false, RenderBackend::NEAREST, samplelayout::format(layout))};
}

// The whole of a target, whose pixels are undefined until then.
OwnedTarget blackTarget(Stage& stage, SampleLayout layout, Size const& size) {
    OwnedTarget made = target(stage, layout, size);
    stage.instance().clear(made.id(), {0, 0, 0});
    return made;
}

// A reservation whose writer wrote. Unwritten, it would hold up the ring.
std::unique_ptr<ConcurrentStagingBuffer> written(WatchedInstance& instance, size_t tile, Sizes const& size,
                                                 Bytes const& pixels) {
    auto buffer = instance.concurrentStagingBuffer(tile, RenderBackend::TILE, size);
    buffer->write(pixels, 0);
    return buffer;
}

// Draws a tile that came through the ring, one that did not and one that is missing.
Bytes drawWith(WatchedInstance& instance) {
    Filter blit = description::blitFilter4x8();
    instance.createFilterInstance(blit);
    for (size_t tile = 1; tile <= kRingBuffers + 1; ++tile)
        instance.synchronizeConcurrentStagingBuffer(written(instance, tile, {6, 5, 3}, noiseBytes(6 * 5 * 3, 7)));
    instance.setTile(9, noiseBytes(6 * 5 * 4, 3), {6, 5, 4}, 0);
    size_t const target = instance.createTarget({18, 5}, 32, false, RenderBackend::NEAREST, RenderBackend::UNDEFINED);
    instance.clear(target, {0, 0, 0});
    instance.drawTiles(target, blit, {0, 17, 0, 4}, {0, 17, 0, 4}, {6, 5}, {{0, 0}, {1, 0}, {2, 0}}, {1, 9, 99}, {});
    return instance.getPixels(target, {0, 18, 0, 5});
}

// An instance that came to life while GL failed in silence is used like any other, and destroyed with all that it has.
Bytes playBackends(Stage& stage) {
    auto& judge = Judge::instance();
    Bytes read;
    {
        Gles3RenderBackend backend;
        judge.use("::Gles3RenderBackend()");
        Gles3RenderBackend moved(std::move(backend));
        judge.use("::Gles3RenderBackend(Gles3RenderBackend&&)");
        auto const made = judge.watch("::createInstance(", [&] { return moved.createInstance(stage.surface()); });
        Gles3RenderBackendInstance second(7, stage.surface(), moved);
        judge.use("Instance::Gles3RenderBackendInstance(size_t");
        Gles3RenderBackendInstance const third(std::move(second));
        judge.use("Instance::Gles3RenderBackendInstance(Gles3RenderBackendInstance&&)");
        append(read, {third.pixelSize(), third.numComponents(), made->targetSize(0)[0]});
        WatchedInstance watched(made, stage.surface());
        append(read, drawWith(watched));
    }
    judge.use("Instance::~Gles3RenderBackendInstance()");
    {
        Gles3RenderBackend rgb(RenderBackend::RGB24, 1000);
        judge.use("::Gles3RenderBackend(RenderBackend::ImageFormatType");
        Gles3RenderBackend const registered(Gles3RenderBackend::FilterRegistry(), RenderBackend::RGBA32, 1000);
        judge.use("::Gles3RenderBackend(GenericMultiFactory");
        auto const made = judge.watch("::createInstance(", [&] { return rgb.createInstance(stage.surface()); });
        append(read, {made->targetSize(0)[1]});
    }
    judge.use("::~Gles3RenderBackend()");
    return read;
}

Bytes playTargets(Stage& stage) {
    auto& instance = stage.instance();
    EmptyHands const emptyHands(instance);
    Bytes read;
    {
        OwnedTarget const rgba = target(stage, SampleLayout::kRgba8, {12, 7});
        instance.clear(rgba.id(), {1, 2, 3, 4});
        instance.clearRect(rgba.id(), {200, 100, 50}, {2, 1, 5, 3});
        Bytes buffer(instance.getPixelsBufferSize(rgba.id(), {1, 9, 2, 4}) / 3 * 4);
        instance.getPixels(buffer.data(), buffer.size(), rgba.id(), {1, 9, 2, 4});
        append(read, buffer);
        append(read, instance.getPixels(rgba.id(), {0, 12, 0, 7}));
        append(read, {rgba.id()}); // the smallest that is free: none is lost
        OwnedTarget const rgb = target(stage, SampleLayout::kRgb8, {5, 3});
        instance.clear(rgb.id(), {9, 8, 7});
        append(read, instance.getPixels(rgb.id(), {0, 5, 0, 3}));
        OwnedTarget const wide = blackTarget(stage, SampleLayout::kThreeChannel16, {4, 4});
        append(read, instance.targetSize(wide.id()) == Sizes{8, 4} ? Bytes{1} : Bytes{0});
        append(read, {instance.targetAlignment(wide.id())[0], instance.targetFiltering(wide.id()),
                      static_cast<size_t>(instance.targetReady(wide.id()))});
        instance.waitForTarget(wide.id());
        instance.finalizeDrawSequence();
        append(read,
               {static_cast<size_t>(&instance.target(wide.id()) == &instance.target(wide.id())), instance.pixelSize(),
                instance.numComponents(), static_cast<size_t>(instance.pixelTypeid() == typeid(unsigned char))});
    }
    // Out of the pool.
    OwnedTarget const again = target(stage, SampleLayout::kRgba8, {10, 7});
    instance.clear(again.id(), {250, 0, 250});
    append(read, instance.getPixels(again.id(), {0, 12, 0, 7}));
    return read;
}

Bytes playTiles(Stage& stage) {
    auto& instance = stage.instance();
    EmptyHands const emptyHands(instance);
    OwnedFilter const blit(stage.shared(), description::blitFilter4x8());
    size_t const first = stage.newTile();
    size_t const second = stage.newTile();
    size_t const third = stage.newTile();
    size_t const missing = stage.newTile();
    instance.setTile(first, noiseBytes(6 * 5 * 4, 3), {6, 5, 4}, 0);
    instance.setTile(second, noiseBytes(6 * 5 * 3 + 10, 4), {6, 5, 3}, 10);
    instance.setTile(third, noiseBytes(12 * 5 * 2, 5), {12, 5, 1}, 0);
    instance.lockTile(first);
    instance.unlockTile(first);
    instance.setTile(first, noiseBytes(4 * 3 * 4, 6), {4, 3, 4}, 0); // into a corner of its texture
    OwnedTarget const target = blackTarget(stage, SampleLayout::kRgba8, {14, 11});
    instance.drawTiles(target.id(), blit.filter(), {0, 13, 0, 10}, {0, 13, 0, 10}, {6, 5},
                       {{0, 0}, {1, 0}, {0, 1}, {1, 1}}, {first, second, third, missing}, {});
    Bytes read = instance.getPixels(target.id(), {0, 14, 0, 11});
    append(read, {static_cast<size_t>(instance.tileSet(third)), static_cast<size_t>(instance.tileSet(missing)),
                  static_cast<size_t>(instance.freeSlots() > 1000)});
    append(read, {instance.eraseTile(first), instance.eraseTiles(second, second + 1), instance.clearTiles()});
    return read;
}

Bytes playSurface(Stage& stage) {
    auto& instance = stage.instance();
    EmptyHands const emptyHands(instance);
    OwnedFilter const blit(stage.shared(), description::blitFilter4x8());
    instance.clear(0, {3, 2, 1});
    instance.executeFilter(blit.filter(), {{stage.source(SampleLayout::kRgba8), 4, 4, false}}, 9, 8, 0, 0, 0, 0, 0, {},
                           {2, 3});
    return instance.getPixels(0, {0, Surface::kTexels, 0, Surface::kTexels});
}

Bytes playStaging(Stage& stage) {
    constexpr size_t kWholeBuffer = 1024; // texels a side, of three bytes: no second one has room beside it
    auto& instance = stage.instance();
    EmptyHands const emptyHands(instance);
    OwnedFilter const blit(stage.shared(), description::blitFilter4x8());
    static Bytes const large = noiseBytes(kWholeBuffer * kWholeBuffer * 3, 9);
    std::array<size_t, 4> const tiles = {stage.newTile(), stage.newTile(), stage.newTile(), stage.newTile()};
    auto first = written(instance, tiles[0], {kWholeBuffer, kWholeBuffer, 3}, large);
    auto second = written(instance, tiles[1], {kWholeBuffer, kWholeBuffer, 3}, large); // in the next buffer
    auto third = written(instance, tiles[2], {6, 5, 3}, noiseBytes(6 * 5 * 3, 7));
    auto fourth = written(instance, tiles[3], {12, 5, 1}, noiseBytes(12 * 5 * 2, 8));
    for (auto* const buffer : {&first, &second, &third, &fourth})
        instance.synchronizeConcurrentStagingBuffer(std::move(*buffer));
    OwnedTarget const target = blackTarget(stage, SampleLayout::kRgba8, {12, 10});
    instance.drawTiles(target.id(), blit.filter(), {0, 11, 0, 9}, {0, 11, 0, 9}, {6, 5},
                       {{0, 0}, {1, 0}, {0, 1}, {1, 1}}, {tiles[0], tiles[1], tiles[2], tiles[3]}, {});
    Bytes read = instance.getPixels(target.id(), {0, 12, 0, 10});
    for (size_t const tile : tiles) {
        // Nothing else brings a staged tile into the cache.
        if (instance.tileSet(tile)) Judge::instance().use("Instance::syncTexturesFromPboRingBuffer(");
        append(read, {static_cast<size_t>(instance.tileSet(tile))});
        instance.unlockTile(tile);
    }
    return read;
}

SampleLayout layoutOf(size_t bits, size_t components) {
    for (auto const layout : {SampleLayout::kRgb8, SampleLayout::kRgba8, SampleLayout::kOneChannel16,
                              SampleLayout::kThreeChannel16, SampleLayout::kFourChannel16})
        if (samplelayout::bitsPerPixel(layout) == bits && samplelayout::components(layout) == components) return layout;
    throw std::logic_error("no such layout");
}

Bytes playMask(Stage& stage, Filter const& description) {
    auto& instance = stage.instance();
    EmptyHands const emptyHands(instance);
    SampleLayout const layout = layoutOf(description.bitsPerPixelIn(), description.componentsIn());
    size_t const source = stage.source(layout);
    OwnedFilter const mask(stage.shared(), description);
    Bytes const id = Stage::envelopes();
    instance.dataEnvelopes(id, {{{}, {{2, 1}, {3, 1}, {2, 2}, {3, 2}, {7, 5}, {8, 5}, {9, 6}, {9, 7}}}});
    instance.lockDataEnvelopes(id);
    instance.unlockDataEnvelopes(id);
    MaskFilterParams params;
    params.envelopes = std::const_pointer_cast<DataEnvelopes>(std::as_const(instance).dataEnvelopes(id));
    OwnedTarget const destination = blackTarget(stage, layout, {16, 10});
    instance.maskRange(source, destination.id(), mask.filter(), {0, 15, 0, 9}, params);
    Bytes read = instance.getPixels(destination.id(), {0, 16, 0, 10});
    append(read, {static_cast<size_t>(instance.dataEnvelopesSet(id)), params.envelopes->count()});
    return read;
}

Bytes playFilter(Stage& stage, Filter const& description) {
    auto& instance = stage.instance();
    EmptyHands const emptyHands(instance);
    SampleLayout const layout = layoutOf(description.bitsPerPixelIn(), description.componentsIn());
    Size const size = Stage::sourceSize(layout);
    size_t const source = stage.source(layout);
    OwnedFilter const filter(stage.shared(), description);
    auto const params = filter.filter().supportsParameters() ? filter.filter().getParametersObject()
                                                             : std::make_shared<SingleFilterParameters>();
    Size const outputSize = {size.width * filter.filter().scaleXNum(), size.height * filter.filter().scaleYNum()};
    OwnedTarget const destination =
        blackTarget(stage, layoutOf(description.bitsPerPixelOut(), description.componentsOut()), outputSize);
    std::array<double, 4> range{};
    instance.inputTextureRange({source, 0, 0, false}, filter.filter(), size.width, size.height, range.data());
    std::vector<FilterSource> const sources(description.numTexturesIn(), FilterSource{source, 0, 0, false});
    instance.executeFilter(filter.filter(), sources, size.width, size.height, destination.id(), 0, 0, 0, 0, *params,
                           {0, 0});
    Bytes read = instance.getPixels(destination.id(), {0, outputSize.width, 0, outputSize.height});
    append(read, {destination.id(), *filter.filter().instanceKey()}); // the smallest that are free: none is lost
    return read;
}

// Programs that lived before a fault go on after it: one whose table is new, one that draws, one that computes.
Bytes playKeptFilters(Stage& stage) {
    auto& instance = stage.instance();
    EmptyHands const emptyHands(instance);
    size_t const rgba = stage.source(SampleLayout::kRgba8);
    size_t const four = stage.source(SampleLayout::kFourChannel16);
    Filter const& table = stage.filter("FilterBlackWhiteGamma8");
    Filter const& equalise = stage.filter("FilterCLAHE");
    Filter const& sharpen = stage.filter("FilterSharpness8");
    Size const small = Stage::sourceSize(SampleLayout::kRgba8);
    Size const large = Stage::sourceSize(SampleLayout::kFourChannel16);
    OwnedTarget const converted = blackTarget(stage, SampleLayout::kRgba8, small);
    OwnedTarget const sharp = blackTarget(stage, SampleLayout::kRgba8, small);
    OwnedTarget const equalised = blackTarget(stage, SampleLayout::kFourChannel16, large);
    // The table is the same for every key, and made anew for each.
    FilterBlackWhiteGamma8Params const curve(std::to_string(stage.key()), 1.6, 200, 3000);
    instance.executeFilter(table, {{rgba, 0, 0, false}}, small.width, small.height, converted.id(), 0, 0, 0, 0, curve,
                           {0, 0});
    instance.executeFilter(sharpen, {{converted.id(), 0, 0, false}}, small.width, small.height, sharp.id(), 0, 0, 0, 0,
                           FilterSharpness8Params(), {0, 0});
    instance.executeFilter(equalise, {{four, 0, 0, false}}, large.width, large.height, equalised.id(), 0, 0, 0, 0,
                           FilterClaheParams(), {0, 0});
    Bytes read = instance.getPixels(sharp.id(), {0, small.width, 0, small.height});
    append(read, instance.getPixels(equalised.id(), {0, large.width, 0, large.height}));
    return read;
}

} // namespace

std::vector<Scenario> scenarios() {
    std::vector<Scenario> all = {{"Backends", playBackends, false, true},
                                 {"Targets", playTargets},
                                 {"Tiles", playTiles},
                                 {"Surface", playSurface},
                                 {"KeptFilters", playKeptFilters, true},
                                 {"Staging", playStaging, false, true}};
    for (auto const& name : description::names()) {
        bool const isMask = name.rfind("MaskFilter", 0) == 0;
        all.push_back({name, [name, isMask](Stage& stage) {
                           Filter const filter = description::byName(name);
                           return isMask ? playMask(stage, filter) : playFilter(stage, filter);
                       }});
    }
    return all;
}

} // namespace faults
