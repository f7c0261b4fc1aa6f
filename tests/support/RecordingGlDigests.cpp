// What the recording GL leaves in targets in place of pictures: digests of all that a draw reads.
#include "tests/support/RecordingGlState.h"

#include <algorithm>
#include <cmath>

using recording::state;

namespace {

// FNV-1a.
class Digest {
public:
    void add(void const* data, size_t bytes) {
        auto const* const begin = static_cast<std::uint8_t const*>(data);
        std::for_each(begin, begin + bytes, [this](std::uint8_t byte) { value_ = (value_ ^ byte) * 0x100000001B3U; });
    }
    template <class T>
    void add(std::vector<T> const& values) {
        add(values.data(), values.size() * sizeof(T));
    }
    void add(std::string const& text) { add(text.data(), text.size()); }
    template <class Integer>
    void number(Integer value) {
        add(&value, sizeof value);
    }
    std::uint64_t value() const { return value_; }

private:
    std::uint64_t value_ = 0xCBF29CE484222325U;
};

size_t bytesPerTexel(RecordingGl::Image const& image) {
    auto const texels = image.width * image.height;
    return texels == 0 ? 0 : image.pixels.size() / texels;
}

// The image behind a framebuffer; null for one that has none.
RecordingGl::Image* imageOf(GLuint framebuffer) {
    if (framebuffer == 0) return &state().surface;
    auto const found = state().framebuffers.find(framebuffer);
    if (found == state().framebuffers.end()) return nullptr;
    auto const texture = state().textures.find(found->second.colorTexture);
    if (texture == state().textures.end() || texture->second.levels.count(0) == 0) return nullptr;
    return &texture->second.levels.at(0);
}

void addImage(Digest& digest, RecordingGl::Image const& image) {
    digest.number(image.width);
    digest.number(image.height);
    digest.number(image.format);
    digest.add(image.pixels);
}

GLuint unitOf(RecordingGl::Program const& program, RecordingGl::Active const& sampler) {
    auto const value = program.values.find(sampler.location);
    return value == program.values.end() ? 0 : static_cast<GLuint>(value->second.front());
}

void addUniforms(Digest& digest, RecordingGl::Program const& program) {
    for (auto const& uniform : program.uniforms) {
        digest.add(uniform.name);
        auto const value = program.values.find(uniform.location);
        if (value != program.values.end()) digest.add(value->second);
        if (uniform.name.rfind("s_", 0) != 0) continue; // no sampler
        auto const bound = state().boundTextures.find(unitOf(program, uniform));
        auto const texture =
            bound == state().boundTextures.end() ? state().textures.end() : state().textures.find(bound->second);
        if (texture == state().textures.end()) continue;
        for (auto const& [parameter, setting] : texture->second.parameters) {
            digest.number(parameter);
            digest.number(setting);
        }
        for (auto const& [level, image] : texture->second.levels)
            addImage(digest, image);
    }
}

void addVertices(Digest& digest) {
    for (auto const& [index, attribute] : state().attributes) {
        if (!attribute.enabled) continue;
        digest.number(index);
        digest.number(attribute.size);
        digest.number(attribute.stride);
        digest.number(attribute.offset);
        digest.add(state().buffers.at(attribute.buffer).bytes);
    }
}

} // namespace

void recording::digestDraw(GLsizei count, std::uint8_t const* indices, size_t indexBytes) {
    auto* const target = imageOf(state().drawFramebuffer);
    if (target == nullptr) return;
    Digest digest;
    auto const& program = state().programs.at(state().currentProgram);
    for (auto const& [stage, source] : program.sources)
        digest.add(source);
    addUniforms(digest, program);
    addVertices(digest);
    digest.number(count);
    digest.add(indices, indexBytes);
    digest.add(state().integers.at(GL_VIEWPORT));
    addImage(digest, *target);
    std::uint64_t value = digest.value();
    for (auto& byte : target->pixels) {
        value = value * 6364136223846793005U + 1442695040888963407U;
        byte = static_cast<std::uint8_t>(value >> 56U);
    }
}

void recording::digestClear() {
    auto* const target = imageOf(state().drawFramebuffer);
    if (target == nullptr) return;
    auto const channels = bytesPerTexel(*target);
    auto const scissor = state().enabled.count(GL_SCISSOR_TEST) != 0;
    auto const box = state().integers.at(GL_SCISSOR_BOX);
    for (size_t i = 0; i < target->pixels.size(); ++i) {
        auto const x = static_cast<GLint>(i / channels % target->width);
        auto const y = static_cast<GLint>(i / channels / target->width);
        auto const inside = x >= box[0] && x < box[0] + box[2] && y >= box[1] && y < box[1] + box[3];
        if (scissor && !inside) continue;
        target->pixels[i] = static_cast<std::uint8_t>(std::lround(255 * state().clearColor[i % channels]));
    }
}

std::array<std::uint8_t, 4> recording::digestedTexel(size_t x, size_t y) {
    std::array<std::uint8_t, 4> texel{};
    auto const* const image = imageOf(state().readFramebuffer);
    if (image == nullptr || x >= image->width || y >= image->height) return texel;
    auto const channels = std::min<size_t>(bytesPerTexel(*image), 4);
    auto const first = (y * image->width + x) * channels;
    std::copy_n(image->pixels.begin() + static_cast<std::ptrdiff_t>(first), channels, texel.begin());
    if (channels == 3) texel[3] = 255;
    return texel;
}
