// The upload ring beside a ring of pixel buffers in bare GL and beside uploads from client memory.
//
// All four have the same shape: the GL thread reserves room for a tile in one of four blocks of 4 MiB, one or two
// workers copy the tile into it, and the GL thread uploads a block into textures when it is full and its last worker is
// done; it spins while all four are taken. They differ in whose code that is, and in the memory of a block:
//
//   ours         concurrentStagingBuffer, write, and synchronizeConcurrentStagingBuffer once the write has returned
//   raw          mapped pixel buffers, glTexImage2D; no checks, and the sampling is not set again
//   texImage     client memory, glTexImage2D
//   texSubImage  client memory, glTexSubImage2D
//
// Eight textures are replaced in turn. One iteration stages 4 MiB; the ring is equally full before and after it.
#include "bench/Benchmarks.h"
#include "bench/GlBenchContext.h"
#include "bench/RawGl.h"
#include "renderbackend/ConcurrentStagingBuffer.h"
#include "tests/support/WorkerThreads.h"

#include <array>
#include <atomic>
#include <cstring>
#include <deque>
#include <memory>
#include <stdexcept>
#include <utility>

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr size_t kBlockBytes = 4194304;
constexpr size_t kBlocks = 4;
constexpr size_t kTextures = 8;

Bytes tilePixels(size_t extent) {
    Bytes pixels(extent * extent * 4);
    for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<std::uint8_t>(i * 7 + i / 1021);
    return pixels;
}

class OurRing {
public:
    OurRing(GlBenchContext const& context, size_t extent, Bytes const& pixels)
        : backend_(context), size_({2 * extent, extent, 1}), pixels_(pixels) {}

    void stage(size_t tile, WorkerThreads& workers) {
        giveBackWritten();
        Tile& staged = staged_.emplace_back(
            backend_.instance->concurrentStagingBuffer(tile % kTextures, RenderBackend::TILE, size_));
        workers.run([this, &staged] {
            staged.buffer->write(pixels_, 0);
            staged.written.store(true);
        });
    }

private:
    struct Tile {
        explicit Tile(std::unique_ptr<ConcurrentStagingBuffer> buffer_) : buffer(std::move(buffer_)) {}
        std::unique_ptr<ConcurrentStagingBuffer> buffer;
        std::atomic<bool> written{false};
    };

    void giveBackWritten() {
        while (!staged_.empty() && staged_.front().written.load()) {
            backend_.instance->synchronizeConcurrentStagingBuffer(std::move(staged_.front().buffer));
            staged_.pop_front();
        }
    }

    BenchBackend backend_;
    std::vector<size_t> const size_; // 16-bit samples: the only RGBA tiles that can be staged
    Bytes const& pixels_;
    std::deque<Tile> staged_;
};

// A block of a bare ring: a mapped pixel buffer.
class MappedBlock {
public:
    MappedBlock() {
        glGenBuffers(1, &buffer_);
        glBindBuffer(GL_PIXEL_UNPACK_BUFFER, buffer_);
        glBufferData(GL_PIXEL_UNPACK_BUFFER, kBlockBytes, nullptr, GL_STREAM_DRAW);
        glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    }
    MappedBlock(MappedBlock const&) = delete;
    MappedBlock& operator=(MappedBlock const&) = delete;
    ~MappedBlock() { glDeleteBuffers(1, &buffer_); }

    std::uint8_t* open() const {
        glBindBuffer(GL_PIXEL_UNPACK_BUFFER, buffer_);
        void* const mapped = glMapBufferRange(GL_PIXEL_UNPACK_BUFFER, 0, kBlockBytes,
                                              GLbitfield{GL_MAP_WRITE_BIT} | GLbitfield{GL_MAP_INVALIDATE_BUFFER_BIT});
        glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
        return static_cast<std::uint8_t*>(mapped);
    }
    void beginUpload() const {
        glBindBuffer(GL_PIXEL_UNPACK_BUFFER, buffer_);
        glUnmapBuffer(GL_PIXEL_UNPACK_BUFFER);
    }
    static void upload(GLsizei extent, size_t offset) {
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, extent, extent, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                     reinterpret_cast<void const*>(offset));
    }
    static void endUpload() { glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0); }

private:
    GLuint buffer_ = 0;
};

class ClientBlock {
public:
    std::uint8_t* open() { return memory_.data(); }
    static void beginUpload() {}
    static void endUpload() {}

protected:
    Bytes memory_ = Bytes(kBlockBytes);
};

class TexImageBlock : public ClientBlock {
public:
    void upload(GLsizei extent, size_t offset) const {
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, extent, extent, 0, GL_RGBA, GL_UNSIGNED_BYTE, memory_.data() + offset);
    }
};

class TexSubImageBlock : public ClientBlock {
public:
    void upload(GLsizei extent, size_t offset) const {
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, extent, extent, GL_RGBA, GL_UNSIGNED_BYTE, memory_.data() + offset);
    }
};

template <class Block>
class BareRing {
public:
    BareRing(GlBenchContext const& /*context*/, size_t extent, Bytes const& pixels)
        : extent_(static_cast<GLsizei>(extent)), pixels_(pixels) {
        glGenTextures(kTextures, textures_.data());
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        for (GLuint const texture : textures_) {
            glBindTexture(GL_TEXTURE_2D, texture);
            for (GLenum const filter : {GLenum{GL_TEXTURE_MIN_FILTER}, GLenum{GL_TEXTURE_MAG_FILTER}})
                glTexParameteri(GL_TEXTURE_2D, filter, GL_NEAREST);
            glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, extent_, extent_, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
        }
        openBlock(0);
    }
    BareRing(BareRing const&) = delete;
    BareRing& operator=(BareRing const&) = delete;
    ~BareRing() { glDeleteTextures(kTextures, textures_.data()); }

    void stage(size_t tile, WorkerThreads& workers) {
        uploadWritten();
        if (slots_[write_].filled + pixels_.size() > kBlockBytes) advance();
        Slot& slot = slots_[write_];
        std::uint8_t* const room = slot.memory + slot.filled;
        slot.filled += pixels_.size();
        slot.tiles.push_back(tile % kTextures);
        slot.writers.fetch_add(1);
        workers.run([this, &slot, room] {
            std::memcpy(room, pixels_.data(), pixels_.size());
            slot.writers.fetch_sub(1);
        });
    }

private:
    struct Slot {
        Block block;
        std::uint8_t* memory = nullptr;
        size_t filled = 0;
        std::vector<size_t> tiles;
        std::atomic<int> writers{0};
    };

    void openBlock(size_t index) {
        write_ = index;
        slots_[index].memory = slots_[index].block.open();
        slots_[index].filled = 0;
    }

    void advance() {
        size_t const next = (write_ + 1) % kBlocks;
        if (next == read_) {
            while (slots_[read_].writers.load() > 0) {}
            uploadWritten();
        }
        openBlock(next);
    }

    void uploadWritten() {
        while (read_ != write_ && slots_[read_].writers.load() == 0) {
            upload(slots_[read_]);
            read_ = (read_ + 1) % kBlocks;
        }
    }

    void upload(Slot& slot) {
        slot.block.beginUpload();
        size_t offset = 0;
        for (size_t const tile : slot.tiles) {
            glBindTexture(GL_TEXTURE_2D, textures_[tile]);
            slot.block.upload(extent_, offset);
            offset += pixels_.size();
        }
        slot.block.endUpload();
        slot.tiles.clear();
    }

    GLsizei extent_;
    Bytes const& pixels_;
    std::array<GLuint, kTextures> textures_{};
    std::array<Slot, kBlocks> slots_;
    size_t write_ = 0;
    size_t read_ = 0;
};

// Checks that the texture uploaded last holds the tile.
void requirePixels(size_t extent, Bytes const& pixels) {
    GLuint const texture = rawGl::currentTexture();
    GLuint framebuffer = 0;
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
    bool const same = rawGl::read(framebuffer, static_cast<GLsizei>(extent), static_cast<GLsizei>(extent)) == pixels;
    glDeleteFramebuffers(1, &framebuffer);
    rawGl::requireNoError();
    if (!same) throw std::runtime_error("the staged tile is not in its texture");
}

template <class Ring>
void stageTiles(benchmark::State& state, GlBenchContext const& context, size_t workerCount, size_t extent) {
    Bytes const pixels = tilePixels(extent);
    Ring ring(context, extent, pixels);
    WorkerThreads workers(workerCount); // declared last, so that no worker writes while the ring is destroyed
    size_t const tilesPerBlock = kBlockBytes / pixels.size();
    size_t tile = 0;
    auto const stageBlock = [&] {
        for (size_t i = 0; i < tilesPerBlock; ++i)
            ring.stage(tile++, workers);
    };
    // Until the ring is full and every texture exists, so that the steady state is measured.
    for (size_t i = 0; i < 4 * kBlocks; ++i)
        stageBlock();
    if (!context.nullDriver()) requirePixels(extent, pixels);
    for (auto _ : state)
        stageBlock();
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kBlockBytes));
}

template <class Ring>
void add(GlBenchContext const& context, std::string const& who, size_t workers, size_t extent) {
    std::string const name = "stageTiles/" + who + "/" + std::to_string(workers) + "/" + std::to_string(extent);
    registerGl(Clock::Wall, name, [&context, workers, extent](benchmark::State& state) {
        stageTiles<Ring>(state, context, workers, extent);
    });
}

} // namespace

void registerStagingRing(GlBenchContext const& context) {
    for (size_t const extent : {size_t{256}, size_t{512}, size_t{1024}}) {
        for (size_t const workers : {size_t{1}, size_t{2}}) {
            add<OurRing>(context, "ours", workers, extent);
            add<BareRing<MappedBlock>>(context, "raw", workers, extent);
            add<BareRing<TexImageBlock>>(context, "texImage", workers, extent);
            add<BareRing<TexSubImageBlock>>(context, "texSubImage", workers, extent);
        }
    }
}
