#include "gles3renderbackend/ExpectedState.h"

#ifdef VELMORA_CHECKED

#include "gles3renderbackend/Gl.h"
#include "renderbackend/Precondition.h"

#include <algorithm>
#include <array>

namespace {

class Look {
public:
    Look() { expectedState::beingLookedAt = true; }
    Look(Look const&) = delete;
    Look& operator=(Look const&) = delete;
    ~Look() { expectedState::beingLookedAt = false; }
};

// A lost context answers no query. What is unanswered counts as expected: the operation itself tells the host, if any
// does.
GLint integer(GLenum name, GLint unanswered = 0) {
    GLint value = unanswered;
    glGetIntegerv(name, &value);
    return value;
}

void expectDisabled(GLenum capability, char const* text) {
    precondition(glIsEnabled(capability) == GL_FALSE, text);
}

void expectZero(GLenum name, char const* text) {
    precondition(integer(name) == 0, text);
}

void expectFragmentsToArrive() {
    std::array<GLboolean, 4> written{GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE};
    glGetBooleanv(GL_COLOR_WRITEMASK, written.data());
    precondition(std::count(written.begin(), written.end(), GL_FALSE) == 0, "GL state: all colours are written");
    expectDisabled(GL_RASTERIZER_DISCARD, "GL state: GL_RASTERIZER_DISCARD is off");
}

// A sampler object replaces the filtering and wrapping of the texture on its unit.
void expectNoSamplers(size_t units) {
    auto const active = static_cast<GLenum>(integer(GL_ACTIVE_TEXTURE));
    for (size_t unit = 0; unit < units; ++unit) {
        glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
        expectZero(GL_SAMPLER_BINDING, "GL state: no sampler object is bound to a texture unit that is sampled");
    }
    glActiveTexture(active);
}

// GL reads any other enabled array as far as the indices go, from a buffer that may be too short or deleted.
void expectNoArrays() {
    auto const arrays = static_cast<GLuint>(integer(GL_MAX_VERTEX_ATTRIBS));
    for (GLuint index = 0; index < arrays; ++index) {
        GLint enabled = GL_FALSE;
        glGetVertexAttribiv(index, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &enabled);
        precondition(enabled == GL_FALSE, "GL state: no vertex attribute array is enabled");
    }
}

void expectWholeRows() {
    expectZero(GL_UNPACK_ROW_LENGTH, "GL state: GL_UNPACK_ROW_LENGTH is 0");
    expectZero(GL_UNPACK_SKIP_ROWS, "GL state: GL_UNPACK_SKIP_ROWS is 0");
    expectZero(GL_UNPACK_SKIP_PIXELS, "GL state: GL_UNPACK_SKIP_PIXELS is 0");
}

} // namespace

void expectedState::forDrawing(size_t units) {
    Look const look;
    expectFragmentsToArrive();
    expectDisabled(GL_BLEND, "GL state: GL_BLEND is off");
    expectDisabled(GL_SAMPLE_ALPHA_TO_COVERAGE, "GL state: GL_SAMPLE_ALPHA_TO_COVERAGE is off");
    expectDisabled(GL_SAMPLE_COVERAGE, "GL state: GL_SAMPLE_COVERAGE is off");
    expectNoSamplers(units);
    expectNoArrays();
}

void expectedState::forMasking() {
    Look const look;
    expectDisabled(GL_RASTERIZER_DISCARD, "GL state: GL_RASTERIZER_DISCARD is off");
    // The mesh of 16384 rectangles uses the restart index.
    expectDisabled(GL_PRIMITIVE_RESTART_FIXED_INDEX, "GL state: GL_PRIMITIVE_RESTART_FIXED_INDEX is off");
    expectNoSamplers(1);
    expectNoArrays();
}

void expectedState::forClearing() {
    forClearingRectangle();
    Look const look;
    expectDisabled(GL_SCISSOR_TEST, "GL state: GL_SCISSOR_TEST is off");
}

void expectedState::forClearingRectangle() {
    Look const look;
    expectFragmentsToArrive();
}

void expectedState::forReading() {
    Look const look;
    expectZero(GL_PIXEL_PACK_BUFFER_BINDING, "GL state: no pixel pack buffer is bound");
    expectZero(GL_PACK_ROW_LENGTH, "GL state: GL_PACK_ROW_LENGTH is 0");
    expectZero(GL_PACK_SKIP_ROWS, "GL state: GL_PACK_SKIP_ROWS is 0");
    expectZero(GL_PACK_SKIP_PIXELS, "GL state: GL_PACK_SKIP_PIXELS is 0");
}

void expectedState::forUploading() {
    Look const look;
    expectZero(GL_PIXEL_UNPACK_BUFFER_BINDING, "GL state: no pixel unpack buffer is bound");
    expectWholeRows();
    // A tile that is written into the corner of its texture is uploaded under the current alignment.
    precondition(integer(GL_UNPACK_ALIGNMENT) <= 4, "GL state: GL_UNPACK_ALIGNMENT is at most 4");
}

void expectedState::forStaging() {
    Look const look;
    expectWholeRows();
    precondition(integer(GL_UNPACK_ALIGNMENT, 1) == 1, "GL state: GL_UNPACK_ALIGNMENT is 1");
}

#endif
