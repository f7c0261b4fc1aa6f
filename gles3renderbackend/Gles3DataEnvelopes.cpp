#include "gles3renderbackend/Gles3DataEnvelopes.h"

#include <array>

namespace {

// Drawn as GL_FLOAT: stored as integers the same bits would be denormals, and nothing would appear.
using Vertex = std::array<GLfloat, 2>;

constexpr std::array<size_t, 6> kTriangles = {0, 1, 2, 0, 2, 3};

Vertex vertex(std::uint32_t x, std::uint32_t y) {
    return {static_cast<GLfloat>(x), static_cast<GLfloat>(y)};
}

} // namespace

Gles3DataEnvelopes::Gles3DataEnvelopes() : vertexBuffer_(GL_ARRAY_BUFFER), indexBuffer_(GL_ELEMENT_ARRAY_BUFFER) {}

Gles3DataEnvelopes::~Gles3DataEnvelopes() = default;

void Gles3DataEnvelopes::set(std::vector<std::uint8_t> const& id, Data const& data) {
    DataEnvelopes::set(id, data);
    std::vector<Vertex> vertices;
    std::vector<GLushort> indices;
    for (auto const& element : data) {
        std::vector<Corner> cells;
        cells.reserve(element.second.size());
        for (auto const& cell : element.second)
            cells.push_back({cell[0], cell[1]});
        for (auto const& [min, max] : mergeCells(cells)) {
            size_t const base = vertices.size();
            vertices.insert(vertices.end(), {vertex(min[0], min[1]), vertex(min[0], max[1]), vertex(max[0], max[1]),
                                             vertex(max[0], min[1])});
            for (size_t const corner : kTriangles)
                indices.push_back(static_cast<GLushort>(base + corner));
        }
    }
    vertexBuffer_.setData(vertices.data(), vertices.size() * sizeof(Vertex));
    indexBuffer_.setData(indices.data(), indices.size() * sizeof(GLushort));
    indexCount_ = indices.size();
}
