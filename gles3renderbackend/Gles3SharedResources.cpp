#include "gles3renderbackend/Gles3SharedResources.h"

#include "gles3renderbackend/resources/UnitQuad.h"

Gles3SharedResources::Gles3SharedResources() : indexBuffer_(GL_ELEMENT_ARRAY_BUFFER), vertexBuffer_(GL_ARRAY_BUFFER) {
    unitQuad::uploadIndices(indexBuffer_);
    indexBuffer_.unbind();
    unitQuad::uploadVertices(vertexBuffer_);
    vertexBuffer_.unbind();
    transparentBlack_.setPixels({0, 0, 0, 0}, {1, 1, 4});
}
