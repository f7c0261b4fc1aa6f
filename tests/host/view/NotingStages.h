#pragma once

#include "host/view/TileStages.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <iterator>
#include <string>

/// "2:0,1" is the tile of level 2 in column 0 and row 1.
inline std::string nameOf(LevelTile const& tile) {
    return std::to_string(tile.level) + ":" + std::to_string(tile.column) + "," + std::to_string(tile.row);
}

inline std::vector<std::string> namesOf(std::vector<LevelTile> const& tiles) {
    std::vector<std::string> names;
    std::transform(tiles.begin(), tiles.end(), std::back_inserter(names), nameOf);
    return names;
}

/// Stages without GL, threads and pixels: they take notes of what they are told, and a test says what is loaded.
class NotingStages : public TileStages {
public:
    // What a test looks at.
    std::vector<TileJob> jobs;      ///< that the last load() asked for and that are not finished
    std::vector<std::string> notes; ///< "load 1:0,0", "cache 1:0,0", "empty 1:0,0", "enhance 1:0,0"
    std::set<LevelTile> rebuilt;
    std::set<LevelTile> enhanced;
    std::set<LevelTile> residuals;
    std::deque<std::unique_ptr<LoadedTile>> finished;
    size_t trimmedRebuiltTo = 0;
    size_t trimmedEnhancedTo = 0;
    std::set<LevelTile> keptRebuilt;
    std::set<LevelTile> keptEnhanced;
    size_t timesFreed = 0;
    // What a test says.
    std::set<LevelTile> empty;
    std::set<LevelTile> cached;
    bool parents = true;                  ///< tiles are rebuilt out of their parents
    std::set<size_t> standIns;            ///< levels; none: all of them
    bool residualBits = false;            ///< level 0 has them
    bool residualsNeeded = false;         ///< to enhance tiles of level 0
    size_t bytesEnhanced = 0;             ///< of all enhanced tiles
    size_t bytesTrimmed = 0;              ///< by each trimRebuilt()
    std::function<void(char const*)> pre; ///< called first by what may fail, with its name
    std::function<void()> behindBuild;    ///< called when a tile was built

    std::vector<std::string> jobNames() const {
        std::vector<std::string> names;
        for (TileJob const& job : jobs)
            names.push_back(nameOf(job.tile) + (job.what == TileJob::What::Residuals ? " residuals" : ""));
        return names;
    }

    /// Finishes the job of that name, or fails it.
    void finish(std::string const& name, std::exception_ptr const& failure = nullptr) {
        auto const names = jobNames();
        auto const place = std::find(names.begin(), names.end(), name) - names.begin();
        finished.push_back(std::make_unique<LoadedTile>());
        finished.back()->job = jobs.at(static_cast<size_t>(place));
        finished.back()->failure = failure;
        jobs.erase(jobs.begin() + place);
    }
    void finishAll() {
        while (!jobs.empty())
            finish(jobNames().front());
    }

    bool needsParents() const override { return parents; }
    bool standsIn(size_t level) const override { return standIns.empty() || standIns.count(level) != 0; }
    bool hasResidualBits(size_t level) const override { return level == 0 && residualBits; }
    bool isEmpty(LevelTile const& tile) override {
        call("isEmpty");
        return empty.count(tile) != 0;
    }
    void load(std::vector<TileJob> const& wanted) override {
        call("load");
        jobs.clear();
        for (TileJob const& job : wanted) {
            if (std::none_of(finished.begin(), finished.end(), [&](auto const& one) { return one->job == job; }))
                jobs.push_back(job);
        }
    }
    std::unique_ptr<LoadedTile> takeLoaded() override {
        if (finished.empty()) return nullptr;
        auto tile = std::move(finished.front());
        finished.pop_front();
        return tile;
    }
    size_t loading() const override { return jobs.size() + finished.size(); }

    bool isRebuilt(LevelTile const& tile) const override { return rebuilt.count(tile) != 0; }
    bool hasBands(LevelTile const& tile) const override { return cached.count(tile) != 0; }
    void buildFromLoaded(LoadedTile const& loaded) override { build("load", loaded.job.tile); }
    void buildFromCache(LevelTile const& tile) override { build("cache", tile); }
    void buildEmpty(LevelTile const& tile) override { build("empty", tile); }

    bool hasResiduals(LevelTile const& tile) const override { return residuals.count(tile) != 0; }
    void keepResiduals(LoadedTile&& loaded) override { residuals.insert(loaded.job.tile); }
    void keepResidualsOf(std::set<LevelTile> const& tiles) override {
        for (auto one = residuals.begin(); one != residuals.end();)
            one = tiles.count(*one) == 0 ? residuals.erase(one) : std::next(one);
    }

    TileSources sourcesOf(LevelTile const& tile) override {
        call("sourcesOf");
        bool const withResiduals = residualsNeeded && tile.level == 0;
        return {{tile}, withResiduals ? std::vector<LevelTile>{tile} : std::vector<LevelTile>{}};
    }
    bool isEnhanced(LevelTile const& tile) const override { return enhanced.count(tile) != 0; }
    void enhance(LevelTile const& tile) override {
        call("enhance");
        notes.push_back("enhance " + nameOf(tile));
        enhanced.insert(tile);
    }

    size_t trimRebuilt(size_t bytes, std::set<LevelTile> const& needed) override {
        trimmedRebuiltTo = bytes;
        keptRebuilt = needed;
        return bytesTrimmed;
    }
    size_t trimEnhanced(size_t bytes, std::set<LevelTile> const& needed) override {
        trimmedEnhancedTo = bytes;
        keptEnhanced = needed;
        return 0;
    }
    size_t enhancedBytes() const override { return bytesEnhanced; }
    void freeTrimmed() override { ++timesFreed; }

private:
    void call(char const* name) const {
        if (pre) pre(name);
    }
    void build(char const* from, LevelTile const& tile) {
        call("build");
        notes.push_back(from + (" " + nameOf(tile)));
        rebuilt.insert(tile);
        if (behindBuild) behindBuild();
    }
};
