#pragma once

#include "gles3renderbackend/filters/LookupTexture.h"
#include "gles3renderbackend/resources/Gles3Shader.h"
#include "renderbackend/SingleFilterParameters.h"
#include "renderbackend/VelmoraException.h"

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <utility>
#include <vector>

/// A filter that looks its output up in a table: the machinery that its concrete classes share. They say how the table
/// of a parameter record is computed and by which key it is known. Up to ten tables are kept, the one not used longest
/// goes first; a key that is kept is not computed again, so records with equal keys must mean equal tables.
///
/// The filter's bitDepthIn chooses the program: up to 8 bits for RGBA pixels, from 9 on for three 16-bit channels.
template <class T>
class Gles3FilterLut : public Gles3Shader {
public:
    explicit Gles3FilterLut(Filter& filter)
        : Gles3Shader(lookup::vertexSource(filter.bitDepthIn()), lookup::fragmentSource(filter.bitDepthIn()), filter) {}

    /// Binds the table to unit 1. Throws VelmoraException for a record that is no ComparableSingleFilterParameters<T>,
    /// std::length_error for a table that has not 2^bitDepthIn entries; the tables kept are as before then, and where
    /// memory runs out.
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
    struct Entry {
        Gles3Texture texture;
        typename std::list<T>::iterator position;
    };

    Gles3Texture const& tableFor(SingleFilterParameters const& params) {
        T const key = tableKey(params);
        auto const found = tables_.find(key);
        if (found != tables_.end()) {
            recency_.splice(recency_.end(), recency_, found->second.position);
            return found->second.texture;
        }
        Gles3Texture texture = lookup::makeTexture(computeTable(params), bitDepthIn());
        std::list<T> newest(1, key);
        Entry const& made = tables_.emplace(key, Entry{std::move(texture), newest.begin()}).first->second;
        // Nothing below takes memory: a table without room for itself drops no other.
        recency_.splice(recency_.end(), newest);
        if (tables_.size() > kTablesKept) {
            tables_.erase(recency_.front());
            recency_.pop_front();
        }
        return made.texture;
    }

    static constexpr size_t kTablesKept = 10;

    std::map<T, Entry> tables_;
    std::list<T> recency_; ///< keys of tables_, the one not used longest in front
};
