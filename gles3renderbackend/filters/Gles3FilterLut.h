#pragma once

#include "gles3renderbackend/LruMap.h"
#include "gles3renderbackend/filters/LookupTexture.h"
#include "gles3renderbackend/resources/Gles3Shader.h"
#include "renderbackend/SingleFilterParameters.h"
#include "renderbackend/VelmoraException.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

/// A filter with a lookup table: the machinery of its concrete classes. These compute the table of a parameter record
/// and its key. Up to ten tables are cached, with LRU eviction; a cached key is not computed again, so records with
/// equal keys must mean equal tables.
///
/// The filter's bitDepthIn chooses the program: up to 8 bits for RGBA pixels, from 9 on for three 16-bit channels.
template <class T>
class Gles3FilterLut : public Gles3Shader {
public:
    explicit Gles3FilterLut(Filter& filter)
        : Gles3Shader(lookup::vertexSource(filter.bitDepthIn()), lookup::fragmentSource(filter.bitDepthIn()), filter) {}

    /// Binds the table to unit 1. Throws VelmoraException for a record that is no ComparableSingleFilterParameters<T>,
    /// std::length_error for a table that has not 2^bitDepthIn entries; the cached tables are unchanged then, and also
    /// if memory runs out.
    void uploadParameters(SingleFilterParameters const& params) override {
        glActiveTexture(GL_TEXTURE1);
        if (dynamic_cast<ComparableSingleFilterParameters<T> const*>(&params) == nullptr)
            throw VelmoraException(
                "Error: bad cast, provided filter parameters are expected to be of type "
                "ComparableSingleFilterParameters",
                "virtual void Gles3FilterLut::uploadParameters(SingleFilterParameters const& params) "
                "override");
        Gles3Texture const& table = tableFor(params);
        glUniform1f(uniformLocation("a_maxValue"), lookup::maxValue(bitDepthIn()));
        glBindTexture(GL_TEXTURE_2D, table.texture());
        glUniform1i(uniformLocation("s_texture01"), 1);
    }

    /// 2^bitDepthIn output bytes.
    virtual std::vector<std::uint8_t> computeTable(SingleFilterParameters const& params) const = 0;
    virtual T tableKey(SingleFilterParameters const& params) const = 0;

private:
    // T needs no more than an order.
    struct Key {
        bool operator<(Key const& other) const { return value < other.value; }
        bool operator==(Key const& other) const { return !(value < other.value) && !(other.value < value); }

        T value;
    };
    // Enough for ten keys.
    struct NoHash {
        size_t operator()(Key const&) const { return 0; }
    };

    Gles3Texture const& tableFor(SingleFilterParameters const& params) {
        Key const key{tableKey(params)};
        if (std::optional<Gles3Texture> const* const kept = tables_.find(key)) return **kept;
        Gles3Texture table = lookup::makeTexture(computeTable(params), bitDepthIn());
        std::optional<Gles3Texture>& kept = tables_.get(key);
        // Nothing below allocates: a table without room for itself evicts no other.
        kept.emplace(std::move(table));
        tables_.setSize(key, 1);
        return *kept;
    }

    LruMap<Key, std::optional<Gles3Texture>, NoHash> tables_{10}; // each counts as one
};
