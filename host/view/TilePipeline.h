#pragma once

#include "host/view/Damages.h"
#include "host/view/TileStages.h"

#include <chrono>
#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <vector>

/// Decides which tiles of a view are loaded, rebuilt, enhanced and dropped, and in which order:
///
///     want(view)  -->  request_  -->  load(): tiles that a thread has to read, coarse levels first
///     advance()   -->  take()    what is loaded, while fewer than kMaxWaiting tiles wait for their parents
///                      step()    one tile: the coarsest level enhanced, then rebuilt tiles, then those of the view's
///                                level enhanced, then fallbacks of those that are missing
///                      trim()    what no view needs, down to the budget
///
/// No GL and no threads: the stages have them. Every operation throws what the stages throw; what fails is made good by
/// the next advance().
class TilePipeline {
public:
    struct Options {
        size_t gpuBytes = 0;              ///< for rebuilt and enhanced tiles; what one view needs may be more
        bool enhanceCoarserLevels = true; ///< to show them until finer ones arrive
        bool forCodes = false;            ///< samples are wanted, with their residual bits, and none enhanced
    };

    /// Tiles that are loaded and not rebuilt.
    static constexpr size_t kMaxWaiting = 24;
    /// Of tiles that went, until the backend is told to free it.
    static constexpr size_t kMaxTrimmedBytes = 16 * 1000 * 1000;

    /// Stages and damages outlive it.
    TilePipeline(PictureInfo const& info, Options const& options, TileStages& stages, Damages& damages);

    /// What is shown from now on. What waits and is not needed any more is dropped.
    void want(View const& view);
    /// Asks for the same view once more, after other enhancements; at once for what is shown first.
    void renew();
    /// Drops what is loaded and not made into tiles.
    void forgetLoaded() { waiting_.clear(); }
    View const& view() const { return view_; }

    /// Takes in what is loaded and makes tiles of it, for about so long; at least one, where there is one to make.
    /// Whether something new can be seen.
    bool advance(std::chrono::milliseconds time);
    /// Whether all of the view's level is there, but for holes.
    bool complete() const;

    /// Tiles of the view's level that cannot be shown, for what they are made of is damaged; and the others.
    std::vector<LevelTile> holes() const { return shown(true); }
    std::vector<LevelTile> sound() const { return shown(false); }
    /// Tiles that are wanted and not rebuilt yet.
    size_t waiting() const { return stages_.loading() + waiting_.size(); }

private:
    void settle();
    void load(TileRequest const& request);
    bool needsBands(LevelTile const& tile);
    bool isEmpty(LevelTile const& tile);
    bool take();
    void keep(std::unique_ptr<LoadedTile> loaded);
    bool step();
    bool rebuild(LevelTile const& tile);
    bool enhance(LevelTile const& tile);
    bool enhanceCoarsest();
    bool isFallbackForMissing(LevelTile const& coarser) const;
    bool dropFinestWaiting();
    void trim();
    bool isHole(LevelTile const& tile) const;
    bool isThere(LevelTile const& tile) const;
    std::vector<LevelTile> shown(bool holes) const;

    PictureInfo info_;
    Options options_;
    TileStages& stages_;
    Damages& damages_;
    View view_;
    std::optional<TileRequest> request_ = TileRequest();       // that of view_; empty: to be made by the next advance()
    std::map<LevelTile, std::unique_ptr<LoadedTile>> waiting_; // finer levels first
    size_t trimmed_ = 0;                                       // bytes
};
