#pragma once

#include "host/view/BandReader.h"

#include <cstddef>
#include <exception>
#include <set>
#include <string>

/// What a view has found damaged in its store, and what cannot be rebuilt for it: each tile whose bands are damaged,
/// and all finer ones below it.
class Damages {
public:
    /// tolerated: they are noted, else thrown on.
    Damages(StoreInfo const& info, bool tolerated) : info_(info), tolerated_(tolerated) {}

    /// Notes what kept a job from being done. Throws it where it is no damage, or none is tolerated.
    void note(TileJob const& job, std::exception_ptr const& failure);
    /// The same of the places that have data, without which every tile has to be read.
    void noteOfAreas(std::exception_ptr const& failure);

    /// What another view of the store has found.
    void add(Damages const& other);

    bool cannotBeRebuilt(LevelTile const& tile) const;
    bool hasNoResiduals(LevelTile const& tile) const { return residuals_.count(tile) != 0; }
    bool areasUnknown() const { return areasUnknown_; }

    /// Of tiles; more may lie where nobody has looked.
    size_t count() const { return bands_.size() + residuals_.size(); }
    /// What was found first, as a sentence for the user; empty: nothing.
    std::string const& first() const { return first_; }

private:
    void require(std::exception_ptr const& failure);

    StoreInfo info_;
    bool tolerated_;
    bool areasUnknown_ = false;
    std::set<LevelTile> bands_;
    std::set<LevelTile> residuals_;
    std::string first_;
};
