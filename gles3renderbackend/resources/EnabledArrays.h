#pragma once

#include "gles3renderbackend/Gl.h"

#include <boost/container/small_vector.hpp>

#include <cstddef>

/// Enables vertex attribute arrays for the lifetime of the object, also if a draw throws: an array that stays enabled
/// makes the host's next draw read from a buffer that may be gone. They are disabled in the order of enabling.
class EnabledArrays {
public:
    EnabledArrays() = default;
    EnabledArrays(EnabledArrays const&) = delete;
    EnabledArrays& operator=(EnabledArrays const&) = delete;
    ~EnabledArrays() {
        for (GLuint const index : indices_)
            glDisableVertexAttribArray(index);
    }

    /// A location of -1 is passed on unchanged.
    void enable(GLint location) {
        indices_.push_back(static_cast<GLuint>(location));
        glEnableVertexAttribArray(indices_.back());
    }

private:
    static constexpr size_t kWithoutAllocation = 8; // more than the inputs of any built-in filter

    boost::container::small_vector<GLuint, kWithoutAllocation> indices_;
};
