#include "host/view/TilePipeline.h"

#include "host/HostError.h"

#include <algorithm>
#include <iterator>

namespace {

using Clock = std::chrono::steady_clock;

template <class Predicate>
void dropIf(std::map<LevelTile, std::unique_ptr<LoadedTile>>& tiles, Predicate const& goes) {
    for (auto one = tiles.begin(); one != tiles.end();)
        one = goes(one->first) ? tiles.erase(one) : std::next(one);
}

} // namespace

TilePipeline::TilePipeline(PictureInfo const& info, Options const& options, TileStages& stages, Damages& damages)
    : info_(info), options_(options), stages_(stages), damages_(damages) {}

void TilePipeline::want(View const& view) {
    if (view == view_) return;
    view_ = view;
    request_.reset();
    settle();
}

void TilePipeline::renew() {
    request_.reset();
    settle();
    while (enhanceCoarsest())
        ;
}

// Nothing counts as complete until this is through.
void TilePipeline::settle() {
    if (request_) return;
    TileRequest request = requestFor(info_, view_, stages_, options_.enhanceCoarserLevels);
    if (options_.forCodes && stages_.hasResidualBits(view_.zoom.level()))
        request.residuals.insert(request.shown.begin(), request.shown.end());
    // What was loaded for another view and is not needed now would only take room.
    dropIf(waiting_, [&](LevelTile const& tile) { return request.needed.count(tile) == 0; });
    stages_.keepResidualsOf(request.residuals);
    load(request);
    request_ = std::move(request);
    // Tiles of the view before may go now, also if nothing is to be loaded for this one.
    trim();
}

// The tiles that neither wait nor can be made without loading.
void TilePipeline::load(TileRequest const& request) {
    std::vector<TileJob> missing;
    for (LevelTile const& tile : request.rebuilt) {
        if (damages_.cannotBeRebuilt(tile)) continue;
        if (needsBands(tile)) missing.push_back({tile, TileJob::What::Bands});
        if (request.residuals.count(tile) != 0 && !stages_.hasResiduals(tile) && !damages_.hasNoResiduals(tile))
            missing.push_back({tile, TileJob::What::Residuals});
    }
    stages_.load(missing);
}

bool TilePipeline::needsBands(LevelTile const& tile) {
    return !stages_.isRebuilt(tile) && waiting_.count(tile) == 0 && !isEmpty(tile) && !stages_.hasBands(tile);
}

bool TilePipeline::isEmpty(LevelTile const& tile) {
    if (damages_.areasUnknown()) return false;
    try {
        return stages_.isEmpty(tile);
    } catch (HostError const&) {
        damages_.noteOfAreas(std::current_exception());
        return false;
    }
}

bool TilePipeline::advance(std::chrono::milliseconds time) {
    auto const end = Clock::now() + time;
    bool changed = false;
    settle();
    do {
        changed = take() || changed;
        bool const stepped = step();
        if (!stepped && !dropFinestWaiting()) break;
        changed = changed || stepped;
    } while (Clock::now() < end);
    if (changed) trim();
    // Bands that the backend's cache had may be gone from it by now.
    if (changed || stages_.loading() == 0) load(*request_);
    return changed;
}

// As many tiles as there is room for; the threads rest meanwhile. Whether a damaged one was among them.
bool TilePipeline::take() {
    size_t const before = damages_.count();
    while (waiting_.size() < kMaxWaiting) {
        auto loaded = stages_.takeLoaded();
        if (!loaded) break;
        if (!loaded->failure) {
            keep(std::move(loaded));
            continue;
        }
        damages_.note(loaded->job, loaded->failure);
        dropIf(waiting_, [this](LevelTile const& tile) { return damages_.cannotBeRebuilt(tile); });
    }
    return damages_.count() > before;
}

void TilePipeline::keep(std::unique_ptr<LoadedTile> loaded) {
    LevelTile const tile = loaded->job.tile;
    if (loaded->job.what == TileJob::What::Residuals) {
        if (request_->residuals.count(tile) != 0) stages_.keepResiduals(std::move(*loaded));
    } else if (request_->needed.count(tile) != 0 && !stages_.isRebuilt(tile) && !damages_.cannotBeRebuilt(tile)) {
        waiting_.emplace(tile, std::move(loaded));
    }
}

// One tile more; false where nothing can be done. The coarsest level comes first, for there is nothing else to show
// yet; then what was asked for.
bool TilePipeline::step() {
    if (enhanceCoarsest()) return true;
    auto const any = [](std::vector<LevelTile> const& tiles, auto const& made) {
        return std::any_of(tiles.begin(), tiles.end(), made);
    };
    return any(request_->rebuilt, [this](LevelTile const& tile) { return rebuild(tile); }) ||
           any(request_->shown, [this](LevelTile const& tile) { return enhance(tile); }) ||
           any(request_->coarser,
               [this](LevelTile const& tile) { return isFallbackForMissing(tile) && enhance(tile); });
}

bool TilePipeline::rebuild(LevelTile const& tile) {
    if (stages_.isRebuilt(tile)) {
        waiting_.erase(tile); // what built it failed behind it
        return false;
    }
    bool const hasParent =
        !stages_.needsParents() || tile.level == info_.levels || stages_.isRebuilt(leveltile::parent(tile));
    if (!hasParent || damages_.cannotBeRebuilt(tile)) return false;
    auto const loaded = waiting_.find(tile);
    if (loaded != waiting_.end()) {
        stages_.buildFromLoaded(*loaded->second);
        waiting_.erase(loaded);
    } else if (isEmpty(tile)) {
        stages_.buildEmpty(tile);
    } else if (stages_.hasBands(tile)) {
        stages_.buildFromCache(tile);
    } else {
        return false;
    }
    return true;
}

bool TilePipeline::enhance(LevelTile const& tile) {
    if (options_.forCodes || stages_.isEnhanced(tile)) return false;
    TileSources const& sources = request_->sources.at(tile);
    if (!std::all_of(sources.rebuilt.begin(), sources.rebuilt.end(),
                     [this](LevelTile const& source) { return stages_.isRebuilt(source); }) ||
        !std::all_of(sources.residuals.begin(), sources.residuals.end(),
                     [this](LevelTile const& source) { return stages_.hasResiduals(source); }))
        return false;
    stages_.enhance(tile);
    return true;
}

// Something to show at once, if it is only the coarsest level.
bool TilePipeline::enhanceCoarsest() {
    return std::any_of(request_->pinnedShown.begin(), request_->pinnedShown.end(), [this](LevelTile const& tile) {
        return tile.level == info_.levels && isFallbackForMissing(tile) && enhance(tile);
    });
}

// Whether a tile of the view's level that is missing lies within a coarser one.
bool TilePipeline::isFallbackForMissing(LevelTile const& coarser) const {
    return std::any_of(request_->shown.begin(), request_->shown.end(), [&](LevelTile const& tile) {
        size_t const halvings = coarser.level - tile.level;
        return !stages_.isEnhanced(tile) && tile.column >> halvings == coarser.column &&
               tile.row >> halvings == coarser.row;
    });
}

// All loaded tiles wait for parents that are not loaded: the queue would deadlock. Drops the finest, which is needed
// last; load() asks for it again.
bool TilePipeline::dropFinestWaiting() {
    if (waiting_.size() < kMaxWaiting) return false;
    waiting_.erase(waiting_.begin());
    return true;
}

void TilePipeline::trim() {
    trimmed_ += stages_.trimEnhanced(options_.gpuBytes / 2, request_->pinnedShown);
    size_t const enhanced = std::min(stages_.enhancedBytes(), options_.gpuBytes / 2);
    trimmed_ += stages_.trimRebuilt(options_.gpuBytes - enhanced, request_->needed);
    if (trimmed_ < kMaxTrimmedBytes) return;
    stages_.freeTrimmed();
    trimmed_ = 0;
}

bool TilePipeline::complete() const {
    return request_ && std::all_of(request_->shown.begin(), request_->shown.end(),
                                   [this](LevelTile const& tile) { return isThere(tile); });
}

// As it is wanted, or as a hole.
bool TilePipeline::isThere(LevelTile const& tile) const {
    if (isHole(tile)) return true;
    if (!options_.forCodes) return stages_.isEnhanced(tile);
    return stages_.isRebuilt(tile) && (request_->residuals.count(tile) == 0 || stages_.hasResiduals(tile));
}

bool TilePipeline::isHole(LevelTile const& tile) const {
    if (damages_.count() == 0) return false;
    TileSources const& sources = request_->sources.at(tile);
    return std::any_of(sources.rebuilt.begin(), sources.rebuilt.end(),
                       [this](LevelTile const& source) { return damages_.cannotBeRebuilt(source); }) ||
           std::any_of(sources.residuals.begin(), sources.residuals.end(),
                       [this](LevelTile const& source) { return damages_.hasNoResiduals(source); });
}

std::vector<LevelTile> TilePipeline::shown(bool holes) const {
    std::vector<LevelTile> tiles;
    if (!request_) return tiles;
    std::copy_if(request_->shown.begin(), request_->shown.end(), std::back_inserter(tiles),
                 [&](LevelTile const& tile) { return isHole(tile) == holes; });
    return tiles;
}
