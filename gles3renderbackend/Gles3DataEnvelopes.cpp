#include "gles3renderbackend/Gles3DataEnvelopes.h"

#include <array>
#include <utility>

namespace {

// Drawn as GL_FLOAT: the bits of stored integers would be denormals, and nothing would appear.
using Vertex = std::array<GLfloat, 2>;

constexpr std::array<size_t, 6> kTriangles = {0, 1, 2, 0, 2, 3};

Vertex vertex(std::uint32_t x, std::uint32_t y) {
    return {static_cast<GLfloat>(x), static_cast<GLfloat>(y)};
}

struct Mesh {
    std::vector<Vertex> vertices;
    std::vector<GLushort> indices;

    void add(DataEnvelopes::Rectangle const& rectangle) {
        auto const& [min, max] = rectangle;
        size_t const base = vertices.size();
        vertices.insert(vertices.end(), {vertex(min[0], min[1]), vertex(min[0], max[1]), vertex(max[0], max[1]),
                                         vertex(max[0], min[1])});
        for (size_t const corner : kTriangles)
            indices.push_back(static_cast<GLushort>(base + corner));
    }
};

} // namespace

Gles3DataEnvelopes::Gles3DataEnvelopes() : vertexBuffer_(GL_ARRAY_BUFFER), indexBuffer_(GL_ELEMENT_ARRAY_BUFFER) {}

Gles3DataEnvelopes::~Gles3DataEnvelopes() = default;

void Gles3DataEnvelopes::set(std::vector<std::uint8_t> const& id, Data const& data) {
    DataEnvelopes base;
    base.set(id, data); // tests the cells too
    Mesh mesh;
    for (auto const& element : data) {
        std::vector<Corner> cells;
        cells.reserve(element.second.size());
        for (auto const& cell : element.second)
            cells.push_back({cell[0], cell[1]});
        for (auto const& rectangle : mergeCells(cells))
            mesh.add(rectangle);
    }
    // Nothing below throws: a set that fails leaves the old contents.
    static_cast<DataEnvelopes&>(*this) = std::move(base);
    vertexBuffer_.setData(mesh.vertices.data(), mesh.vertices.size() * sizeof(Vertex));
    indexBuffer_.setData(mesh.indices.data(), mesh.indices.size() * sizeof(GLushort));
    indexCount_ = mesh.indices.size();
}
