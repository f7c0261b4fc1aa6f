#include "host/view/PictureView.h"

#include "host/HostError.h"
#include "host/filter/FilterDescriptions.h"
#include "host/image/PixelBands.h"
#include "host/store/TileStore.h"
#include "host/view/Damages.h"
#include "host/view/DataMask.h"
#include "host/view/EmptyAreas.h"
#include "host/view/FrameComposer.h"
#include "host/view/ShownAlpha.h"
#include "host/view/TileLoader.h"
#include "host/view/TileRequest.h"

#include <algorithm>
#include <map>
#include <optional>

namespace {

using Clock = std::chrono::steady_clock;
using Layout = SampleLayout;

constexpr std::size_t kMaxPoolBytes = 16 * 1000 * 1000;
constexpr std::size_t kMaxWaiting = 24; // tiles

} // namespace

struct PictureView::State {
    State(std::shared_ptr<RenderBackendInstance> const& gl, std::string const& path, Options const& chosen)
        : instance(gl),
          options(chosen),
          store(path, chosen.interruption),
          info(store.info()),
          cache(std::make_shared<SampleCache>(chosen.hostBytes)),
          targets(gl),
          rebuilt(gl, targets, info),
          deep(targets, rebuilt, info),
          shown(gl, targets, rebuilt, deep, info),
          composer(gl, targets, shown, info),
          emptyAreas(gl, store),
          mask(gl, targets, emptyAreas, info),
          damages(info, chosen.showHoles),
          loader(path, chosen.threads, cache) {}

    // Until this is through, nothing counts as complete: what fails in between is made good by the next advance().
    void want() {
        wanted = requestFor(info, view, shown, options.enhanceCoarserLevels);
        if (options.forCodes && view.zoom.level() == 0 && info.residualBits > 0)
            wanted.residuals.insert(wanted.shown.begin(), wanted.shown.end());
        // What was read for another view and is not wanted now would only take room.
        for (auto loaded = waiting.begin(); loaded != waiting.end();)
            loaded = wanted.needed.count(loaded->first) == 0 ? waiting.erase(loaded) : std::next(loaded);
        deep.keepOnly(wanted.residuals);
        request();
        settled = true;
    }

    // Tiles that no thread has read yet and that need one.
    void request() {
        std::vector<TileJob> missing;
        for (LevelTile const& tile : wanted.rebuilt) {
            if (damages.cannotBeRebuilt(tile)) continue;
            if (!rebuilt.has(tile) && waiting.count(tile) == 0 && !isEmpty(tile) && !rebuilt.hasBands(tile))
                missing.push_back({tile, TileJob::What::Bands});
            if (wanted.residuals.count(tile) != 0 && !deep.hasResiduals(tile) && !damages.hasNoResiduals(tile))
                missing.push_back({tile, TileJob::What::Residuals});
        }
        loader.want(missing);
    }

    bool isEmpty(LevelTile const& tile) {
        if (damages.areasUnknown()) return false;
        try {
            return emptyAreas.empty(tile);
        } catch (HostError const&) {
            damages.noteOfAreas(std::current_exception());
            return false;
        }
    }

    // Whether it cannot be shown, for what it is made of is damaged.
    bool isHole(LevelTile const& tile) {
        if (damages.count() == 0) return false;
        auto const sources = shown.sources(tile);
        auto const residuals = shown.residualSources(tile);
        return std::any_of(sources.begin(), sources.end(),
                           [this](auto const& source) { return damages.cannotBeRebuilt(source); }) ||
               std::any_of(residuals.begin(), residuals.end(),
                           [this](auto const& source) { return damages.hasNoResiduals(source); });
    }

    // As many as there is room for; the threads rest meanwhile. Whether a damage was among them.
    bool takeLoaded() {
        std::size_t const before = damages.count();
        while (waiting.size() < kMaxWaiting) {
            auto loaded = loader.take();
            if (!loaded) break;
            if (loaded->failure) {
                damages.note(loaded->job, loaded->failure);
                dropWhatCannotBeRebuilt();
                continue;
            }
            LevelTile const tile = loaded->job.tile;
            if (loaded->job.what == TileJob::What::Residuals) {
                if (wanted.residuals.count(tile) != 0) deep.keep(std::move(*loaded));
            } else if (wanted.needed.count(tile) != 0 && !rebuilt.has(tile) && !damages.cannotBeRebuilt(tile)) {
                waiting.emplace(tile, std::move(loaded));
            }
        }
        return damages.count() > before;
    }

    void dropWhatCannotBeRebuilt() {
        for (auto loaded = waiting.begin(); loaded != waiting.end();)
            loaded = damages.cannotBeRebuilt(loaded->first) ? waiting.erase(loaded) : std::next(loaded);
    }

    // Where all that wait are for parents that are not there, one must go, or no parent could come: the finest, which
    // is needed last. It is asked for again.
    bool dropFinestWaiting() {
        if (waiting.size() < kMaxWaiting) return false;
        waiting.erase(waiting.begin());
        return true;
    }

    bool rebuild(LevelTile const& tile) {
        if (rebuilt.has(tile) || !rebuilt.hasParent(tile) || damages.cannotBeRebuilt(tile)) return false;
        auto const loaded = waiting.find(tile);
        if (loaded != waiting.end()) {
            rebuilt.buildFromLoaded(*loaded->second);
            waiting.erase(loaded);
        } else if (isEmpty(tile)) {
            rebuilt.buildEmpty(tile);
        } else if (rebuilt.hasBands(tile)) {
            rebuilt.buildFromCache(tile);
        } else {
            return false;
        }
        return true;
    }

    bool enhance(LevelTile const& tile) {
        if (options.forCodes || shown.has(tile)) return false;
        auto const sources = shown.sources(tile);
        auto const residuals = shown.residualSources(tile);
        if (!std::all_of(sources.begin(), sources.end(), [this](auto const& one) { return rebuilt.has(one); }) ||
            !std::all_of(residuals.begin(), residuals.end(),
                         [this](auto const& one) { return deep.hasResiduals(one); }))
            return false;
        shown.build(tile);
        return true;
    }

    // Whether a tile of the view's level that is not there lies in a coarser one.
    bool isFallbackForMissing(LevelTile const& coarser) const {
        return std::any_of(wanted.shown.begin(), wanted.shown.end(), [&](LevelTile const& tile) {
            std::size_t const halvings = coarser.level - tile.level;
            return !shown.has(tile) && tile.column >> halvings == coarser.column && tile.row >> halvings == coarser.row;
        });
    }

    // Something to show at once, if it is only the coarsest level.
    bool enhanceCoarsest() {
        auto const isCoarsest = [this](LevelTile const& tile) { return tile.level == info.levels; };
        return std::any_of(wanted.pinnedShown.begin(), wanted.pinnedShown.end(), [&](LevelTile const& tile) {
            return isCoarsest(tile) && isFallbackForMissing(tile) && enhance(tile);
        });
    }

    // One tile more that can be shown; false where nothing can be done. The coarsest level comes first, for there is
    // nothing else to show yet; then what was asked for.
    bool step() {
        if (enhanceCoarsest()) return true;
        for (LevelTile const& tile : wanted.rebuilt) {
            if (rebuild(tile)) return true;
        }
        for (LevelTile const& tile : wanted.shown) {
            if (enhance(tile)) return true;
        }
        return std::any_of(wanted.coarser.begin(), wanted.coarser.end(),
                           [this](LevelTile const& tile) { return isFallbackForMissing(tile) && enhance(tile); });
    }

    // As it is wanted, or as a hole.
    bool isThere(LevelTile const& tile) {
        if (isHole(tile)) return true;
        if (!options.forCodes) return shown.has(tile);
        return rebuilt.has(tile) && (wanted.residuals.count(tile) == 0 || deep.hasResiduals(tile));
    }

    bool complete() {
        return settled && std::all_of(wanted.shown.begin(), wanted.shown.end(),
                                      [this](LevelTile const& tile) { return isThere(tile); });
    }

    void trim() {
        erased += shown.trim(options.gpuBytes / 2, wanted.pinnedShown);
        erased += rebuilt.trim(options.gpuBytes - std::min(shown.bytes(), options.gpuBytes / 2), wanted.needed);
        if (erased < kMaxPoolBytes) return;
        instance->clearTargets(); // erased ones wait there to be used again
        erased = 0;
    }

    bool drawsNothing() const { return view.width == 0 || view.height == 0; }

    // The tiles of the view's level are there, but for holes.
    void putAlpha(std::vector<std::uint8_t>& rgba) {
        Region const part = view.pixelsOf(info);
        for (LevelTile const& tile : wanted.shown) {
            if (isHole(tile)) continue;
            Region const pixels = shownalpha::pixelsOf(view.zoom, leveltile::shownRegion(info, tile));
            shownalpha::put(rgba, view, common(part, pixels), targets, rebuilt.plane(tile, info.bands - 1),
                            rebuilt.depth());
        }
    }

    // In pixels of the picture at the view's zoom.
    std::vector<Region> holes() {
        std::vector<Region> holes;
        for (LevelTile const& tile : wanted.shown) {
            if (isHole(tile)) holes.push_back(shownalpha::pixelsOf(view.zoom, leveltile::shownRegion(info, tile)));
        }
        return holes;
    }

    std::shared_ptr<RenderBackendInstance> instance;
    Options options;
    TileStore store;
    StoreInfo info;
    std::shared_ptr<SampleCache> cache;
    FilterRunner targets;
    LevelTiles rebuilt;
    LevelSamples deep; // of pictures of 16 bits
    ShownTiles shown;
    FrameComposer composer;
    EmptyAreas emptyAreas;
    DataMask mask;
    Damages damages;
    TileLoader loader;

    View view;
    TileRequest wanted;
    bool settled = true; // whether `wanted` is that of the view and the enhancements
    std::map<LevelTile, std::unique_ptr<LoadedTile>> waiting; // for their parents, or for the GL thread
    std::optional<OwnedTarget> frame;
    std::size_t erased = 0;
};

PictureView::PictureView(std::shared_ptr<RenderBackendInstance> const& instance, std::string const& storePath,
                         Options const& options)
    : state_(std::make_unique<State>(instance, storePath, options)) {}

PictureView::~PictureView() = default;

StoreInfo const& PictureView::info() const {
    return state_->info;
}

Size PictureView::sizeAt(Zoom const& zoom) const {
    return leveltile::pixelExtent(state_->info, zoom);
}

void PictureView::enhance(std::vector<enhancement::Step> const& steps) {
    state_->shown.enhance(steps);
    state_->settled = false;
    state_->want();
    while (state_->enhanceCoarsest())
        ;
}

void PictureView::show(View const& view) {
    if (view == state_->view) return;
    state_->view = view;
    state_->settled = false;
    state_->want();
}

bool PictureView::advance(std::chrono::milliseconds time) {
    auto const end = Clock::now() + time;
    bool changed = false;
    if (!state_->settled) state_->want();
    do {
        changed = state_->takeLoaded() || changed;
        bool const stepped = state_->step();
        if (!stepped && !state_->dropFinestWaiting()) break;
        changed = changed || stepped;
    } while (Clock::now() < end);
    if (changed) state_->trim();
    // Bands that the cache had may be gone from it by now.
    if (changed || state_->loader.pending() == 0) state_->request();
    return changed;
}

void PictureView::wait(std::chrono::milliseconds time) {
    state_->loader.wait(time);
}

bool PictureView::complete() const {
    return state_->complete();
}

std::size_t PictureView::frame() {
    if (state_->drawsNothing()) throw std::logic_error("a view without pixels has no frame");
    state_->frame.reset();
    state_->frame = state_->composer.draw(state_->view, state_->options.background, state_->holes());
    return state_->frame->id();
}

std::vector<std::uint8_t> PictureView::pixels() {
    if (state_->drawsNothing()) return {};
    frame();
    auto rgba = state_->targets.read(*state_->frame, Layout::kRgba8, {0, 0, state_->view.width, state_->view.height});
    if (pixelbands::hasAlpha(state_->info.bands) && complete()) state_->putAlpha(rgba);
    return rgba;
}

std::vector<std::uint16_t> PictureView::codes() {
    View const& view = state_->view;
    std::size_t const bands = state_->info.bands;
    Region const pixels = view.pixelsOf(state_->info);
    if (!complete() || hasHoles() || pixels.width != view.width || pixels.height != view.height)
        throw std::logic_error("codes are those of a complete view within the picture");
    Region const samples = view.samplesOf(pixels);
    std::vector<std::uint16_t> const all = state_->deep.codes(view.zoom.level(), samples, bands);
    std::vector<std::uint16_t> codes;
    codes.reserve(pixels.width * pixels.height * bands);
    for (std::size_t y = pixels.y; y < pixels.y + pixels.height; ++y) {
        std::size_t const row = (view.zoom.sampleAt(y) - samples.y) * samples.width;
        for (std::size_t x = pixels.x; x < pixels.x + pixels.width; ++x) {
            auto const* const pixel = &all[(row + view.zoom.sampleAt(x) - samples.x) * bands];
            codes.insert(codes.end(), pixel, pixel + bands);
        }
    }
    return codes;
}

void PictureView::present() {
    if (!state_->frame || state_->drawsNothing()) return;
    View const& view = state_->view;
    state_->instance->executeFilter(state_->targets.prepared(description::blitFilter4x8()),
                                    {{state_->frame->id(), 0, 0, false}}, view.width, view.height, 0, 0, 0, 0, 0, {},
                                    {0, 0});
}

std::vector<std::uint8_t> PictureView::dataMask() {
    if (state_->drawsNothing()) return {};
    try {
        return state_->mask.draw(state_->view);
    } catch (HostError const&) {
        state_->damages.noteOfAreas(std::current_exception());
        return std::vector<std::uint8_t>(state_->view.width * state_->view.height, 0);
    }
}

bool PictureView::hasHoles() {
    return !state_->holes().empty();
}

PictureView::Damage PictureView::damage() const {
    return {state_->damages.count(), state_->damages.first()};
}

PictureView::Statistics PictureView::statistics() const {
    State const& state = *state_;
    return {state.rebuilt.count(), state.rebuilt.bytes() + state.shown.bytes(), state.cache->bytes(),
            state.loader.pending() + state.waiting.size()};
}
