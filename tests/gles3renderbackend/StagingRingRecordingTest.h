#pragma once

#include "tests/gles3renderbackend/BackendRecordingTest.h"
#include "tests/gles3renderbackend/StagingRing.h"

#include <algorithm>
#include <atomic>

namespace backendtest {

/// The counters of outstanding writers, one a ring buffer.
std::vector<std::atomic<int>>& countersOf(Gles3RenderBackendInstance& instance);

/// One image that went from a ring buffer into a texture; compared by its place in the buffer.
struct Upload {
    std::string offset; // into the bound pixel buffer
    GLuint texture;

    bool operator==(Upload const& other) const { return offset == other.offset; }
};

// Sizes of tiles. 4 MiB: 16-bit samples, two to a texel.
inline Sizes const kWholeBuffer = {2048, 1024, 1};
inline Sizes const kThreeMiB = {1024, 1024, 3};
inline Sizes const kOneMiB = {512, 1024, 1};
inline Sizes const kTwoMiB = {1024, 1024, 1};
inline Sizes const kTwoTexels = {2, 1, 3}; // 6 bytes

} // namespace backendtest

/// The upload ring step by step, over the recording GL: who writes when is written down in each test. A second thread
/// is only there where a wait has to end, and the outcome does not depend on when it runs.
class StagingRingRecordingTest : public BackendRecordingTest {
protected:
    backendtest::Staged reserve(size_t tile, backendtest::Sizes const& size) const {
        return instance->concurrentStagingBuffer(tile, RenderBackend::BufferType{}, size);
    }

    // Reserves and writes.
    backendtest::Staged written(size_t tile, backendtest::Sizes const& size, unsigned char fill = 7) const {
        backendtest::Staged buffer = reserve(tile, size);
        buffer->write(backendtest::Bytes(bytesOf(buffer), fill), 0);
        return buffer;
    }

    static size_t bytesOf(backendtest::Staged const& buffer) {
        return buffer->size()[0] * buffer->size()[1] * buffer->size()[2];
    }

    bool synchronize(backendtest::Staged buffer) const {
        return instance->synchronizeConcurrentStagingBuffer(std::move(buffer));
    }

    std::vector<int> counters() const {
        std::vector<int> values;
        for (auto const& counter : backendtest::countersOf(gles()))
            values.push_back(counter.load());
        return values;
    }

    // The uploads since the last forgetCalls, in order, with their textures.
    std::vector<backendtest::Upload> uploads() const {
        std::vector<backendtest::Upload> result;
        GLuint texture = 0;
        for (auto const& call : gl.calls()) {
            if (call.name == "glBindTexture") texture = static_cast<GLuint>(call.number(1));
            if (call.name == "glTexImage2D") result.push_back({call.arguments.at(8).text, texture});
        }
        return result;
    }

    backendtest::Bytes const& pixelsOf(backendtest::Upload const& upload) const {
        return gl.texture(upload.texture).image().pixels;
    }

    // The bytes of a tile of two texels after a write and its upload.
    backendtest::Bytes uploadedAfterWriting(backendtest::Bytes const& pixels, size_t offset) {
        backendtest::Staged buffer = reserve(1, backendtest::kTwoTexels);
        // The room is not clean: without this a forgotten fill would look like zeros.
        auto& storage = const_cast<backendtest::Bytes&>(gl.buffer(mappedBuffer()).bytes);
        std::fill_n(storage.begin(), 6, static_cast<unsigned char>(0xEE));
        buffer->write(pixels, offset);
        gl.forgetCalls();
        EXPECT_TRUE(synchronize(std::move(buffer)));
        return pixelsOf(uploads().at(0));
    }

    GLuint mappedBuffer() const {
        return firstLiving("buffer", [&](GLuint name) { return gl.buffer(name).mapped; });
    }
    size_t mappedBuffers() const {
        size_t count = 0;
        for (auto const& object : gl.living())
            if (object.rfind("buffer ", 0) == 0)
                count += gl.buffer(static_cast<GLuint>(std::stoul(object.substr(7)))).mapped ? 1U : 0U;
        return count;
    }
};
