#include "host/view/Damages.h"

#include "host/HostError.h"

// Throws on what is not to be noted.
void Damages::require(std::exception_ptr const& failure) {
    if (!tolerated_) std::rethrow_exception(failure);
    try {
        std::rethrow_exception(failure);
    } catch (HostError const& error) {
        bool const ofFile =
            error.kind() == HostError::Kind::DamagedStore || error.kind() == HostError::Kind::UnreadableImage;
        if (!ofFile) throw;
        if (first_.empty()) first_ = error.what();
    }
}

void Damages::note(TileJob const& job, std::exception_ptr const& failure) {
    require(failure);
    (job.what == TileJob::What::Bands ? bands_ : residuals_).insert(job.tile);
}

void Damages::noteOfAreas(std::exception_ptr const& failure) {
    require(failure);
    areasUnknown_ = true;
}

void Damages::add(Damages const& other) {
    bands_.insert(other.bands_.begin(), other.bands_.end());
    residuals_.insert(other.residuals_.begin(), other.residuals_.end());
    areasUnknown_ = areasUnknown_ || other.areasUnknown_;
    if (first_.empty()) first_ = other.first_;
}

bool Damages::cannotBeRebuilt(LevelTile const& tile) const {
    if (bands_.empty()) return false;
    for (LevelTile one = tile;; one = leveltile::parent(one)) {
        if (bands_.count(one) != 0) return true;
        if (one.level >= coarsestParent_) return false;
    }
}
