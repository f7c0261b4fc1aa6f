#pragma once

#include "host/view/TileReader.h"

#include <cstddef>
#include <exception>
#include <set>
#include <string>

/// What a view has found damaged in its file, and what cannot be rebuilt for it: each damaged tile and, in a store, all
/// finer ones below it.
class Damages {
public:
    /// Tiles are rebuilt out of coarser ones up to that level; 0: each by itself. tolerated: damages are noted, else
    /// thrown on.
    Damages(size_t coarsestParent, bool tolerated) : coarsestParent_(coarsestParent), tolerated_(tolerated) {}

    /// Notes what kept a job from being done. Throws it where it is no damage, or none is tolerated.
    void note(TileJob const& job, std::exception_ptr const& failure);
    /// The same of the places that have data, without which every tile has to be read.
    void noteOfAreas(std::exception_ptr const& failure);

    /// What another view of the file has found.
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

    size_t coarsestParent_;
    bool tolerated_;
    bool areasUnknown_ = false;
    std::set<LevelTile> bands_;
    std::set<LevelTile> residuals_;
    std::string first_;
};
