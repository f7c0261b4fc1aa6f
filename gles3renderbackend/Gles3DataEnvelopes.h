#pragma once

#include "gles3renderbackend/resources/Gles3Buffer.h"
#include "renderbackend/DataEnvelopes.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// An envelope set with the triangles of its mask. GL thread only; copies share the GL buffers.
///
/// The mesh: per rectangle four vertices, the corners as two 32-bit floats each, and six 16-bit indices:
///
///     1 (min x, max y) ---- 2 (max x, max y)
///        |              /      |              triangles: 0 1 2 and 0 2 3
///     0 (min x, min y) ---- 3 (max x, min y)
///
/// The corners are the inclusive ones, without + 1: cells c0 to c1 cover the pixels c0 to c1 - 1, and a single row or
/// column of cells draws nothing. Give cells 0 to W to cover W pixels. Indices wrap beyond 16384 rectangles.
class Gles3DataEnvelopes : public DataEnvelopes {
public:
    Gles3DataEnvelopes();
    Gles3DataEnvelopes(Gles3DataEnvelopes const&) = default;
    Gles3DataEnvelopes& operator=(Gles3DataEnvelopes const&) = default;
    ~Gles3DataEnvelopes() override;

    /// Besides the base: merges the cells of each element alone and uploads the mesh. Leaves both buffers bound. If it
    /// throws, cells, id and mesh are unchanged.
    void set(std::vector<std::uint8_t> const& id, Data const& data) override;

    /// Number of indices to draw, 0 until set() has run.
    size_t indexCount() const { return indexCount_; }
    Gles3Buffer const& vertexBuffer() const { return vertexBuffer_; }
    Gles3Buffer const& indexBuffer() const { return indexBuffer_; }

private:
    Gles3Buffer vertexBuffer_;
    Gles3Buffer indexBuffer_;
    size_t indexCount_ = 0;
};
