#pragma once

#include "gles3renderbackend/Gl.h"

#include <array>
#include <cstddef>
#include <vector>

/// Enables a vertex attribute array for the lifetime of the object, also if a draw throws: an array that stays enabled
/// makes the host's next draw read from a buffer that may be gone. A location of -1 is passed on unchanged.
class EnabledArray {
public:
    explicit EnabledArray(GLint location) : index_(static_cast<GLuint>(location)) { glEnableVertexAttribArray(index_); }
    EnabledArray(EnabledArray const&) = delete;
    EnabledArray& operator=(EnabledArray const&) = delete;
    ~EnabledArray() { glDisableVertexAttribArray(index_); }

private:
    GLuint const index_;
};

/// The same for any number of arrays, which are disabled in the order of enabling.
class EnabledArrays {
public:
    EnabledArrays() = default;
    EnabledArrays(EnabledArrays const&) = delete;
    EnabledArrays& operator=(EnabledArrays const&) = delete;
    ~EnabledArrays() {
        for (size_t i = 0; i < count_; ++i)
            glDisableVertexAttribArray(first_[i]);
        for (GLuint const index : more_)
            glDisableVertexAttribArray(index);
    }

    void enable(GLint location) {
        auto const index = static_cast<GLuint>(location);
        if (count_ < first_.size())
            first_[count_++] = index;
        else
            more_.push_back(index);
        glEnableVertexAttribArray(index);
    }

private:
    std::array<GLuint, 8> first_{}; // more than the inputs of any built-in filter: these take no memory
    size_t count_ = 0;
    std::vector<GLuint> more_;
};
