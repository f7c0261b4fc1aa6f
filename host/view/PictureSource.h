#pragma once

#include "host/display/DisplayRequest.h"
#include "host/pyramid/Pyramid.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>

/// What a view shows: a tile store, or a picture file by the levels that it has.
struct PictureSource {
    PictureSource(std::string storePath) : store(std::move(storePath)) {}
    PictureSource(char const* storePath) : store(storePath) {}
    PictureSource(std::shared_ptr<Pyramid const> file) : pyramid(std::move(file)) {}

    std::string store; ///< its path; empty: the pyramid
    std::shared_ptr<Pyramid const> pyramid;
    std::optional<DisplayRequest> display; ///< empty: samples are shown as they are, the upper 8 bits of a store's
    std::shared_ptr<void const> kept;      ///< keeps a store in a cache from being removed
};
