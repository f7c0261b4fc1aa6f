#include "gles3renderbackend/Gles3RenderBackendInstance.h"

#include "gles3renderbackend/ExpectedState.h"
#include "gles3renderbackend/resources/Gles3Target.h"
#include "renderbackend/RenderContext.h"
#include "renderbackend/VelmoraException.h"

#include <algorithm>
#include <array>
#include <new>
#include <type_traits>

namespace {

// Deliberate: clearRect reports clear's location, by which hosts know both failures.
constexpr char const* kClear =
    "void Gles3RenderBackendInstance::clear(size_t target, std::vector<size_t> const& color)";
constexpr char const* kCreateTarget =
    "size_t Gles3RenderBackendInstance::createTarget(std::vector<size_t> const& size, size_t bits, ImageFiltering "
    "filter, ImageFormatType format)";
constexpr char const* kGetPixelsBuffer =
    "size_t Gles3RenderBackendInstance::getPixels(void* buffer, size_t bufferSize, size_t target, "
    "std::vector<size_t> const& rect) const";
constexpr char const* kGetPixelsVector =
    "std::vector<unsigned char> Gles3RenderBackendInstance::getPixels(size_t target, std::vector<size_t> const& rect)";
constexpr char const* kGetPixelsBufferSize =
    "size_t Gles3RenderBackendInstance::getPixelsBufferSize(size_t target, std::vector<size_t> const& rect) const";
constexpr char const* kInvalidRectangle = "Invalid rectangle";

// The packing of logical pixels in texels along x; at least one of the two is 1.
struct Packing {
    size_t logicalPerPhysical;
    size_t physicalPerLogical;
};

// Bits of a texel, 0 for values outside the enumeration.
size_t texelBits(RenderBackend::ImageFormatType format) {
    switch (format) {
    case RenderBackend::RGB24:
        return 24;
    case RenderBackend::RGBA32:
        return 32;
    case RenderBackend::GRAY8:
        return 8;
    case RenderBackend::UNDEFINED:
        throw VelmoraException("undefined pixel format", kCreateTarget);
    }
    return 0;
}

Packing packing(RenderBackend::ImageFormatType format, size_t bits) {
    size_t const texel = texelBits(format);
    if (bits == 0) throw VelmoraException("bits of a pixel must not be 0", kCreateTarget);
    if (texel == 0) return {1, 1};
    if (bits < texel) return {texel / bits, 1};
    return {1, bits / texel + (bits % texel != 0 ? 1 : 0)};
}

// Deliberate: any other failure leaves createTarget as a std::exception that is no VelmoraException, with the same
// text.
class TargetFailure final : public std::exception {
public:
    explicit TargetFailure(std::string text) : text_(std::make_shared<std::string const>(std::move(text))) {}
    char const* what() const noexcept override { return text_->c_str(); }

private:
    std::shared_ptr<std::string const> text_; // shared: copying an exception must not throw
};

size_t roundedDownToThousands(size_t n) {
    return n - n % 1000;
}

VelmoraException tooLarge(VelmoraRangeException const& failure, Packing const& pack) {
    size_t const width = roundedDownToThousands(failure.limit() / pack.physicalPerLogical * pack.logicalPerPhysical);
    size_t const height = roundedDownToThousands(failure.limit());
    return {"Requested size exceeds GLES3Backend capabilities", failure.location(),
            "Maximum GLES3 supported range size = width: " + std::to_string(width) +
                " & height: " + std::to_string(height)};
}

// The pooled target that wastes the fewest texels; among equals the one erased first.
std::list<Gles3Target>::iterator bestFit(std::list<Gles3Target>& pool, size_t physicalWidth, size_t height,
                                         Packing const& pack, RenderBackend::ImageFiltering filtering,
                                         RenderBackend::ImageFormatType format) {
    auto best = pool.end();
    size_t bestWaste = 0;
    for (auto candidate = pool.begin(); candidate != pool.end(); ++candidate) {
        bool const sameKind = candidate->format() == format && candidate->filtering() == filtering;
        bool const largeEnough = candidate->width() >= physicalWidth && candidate->height() >= height;
        bool const wholePixels = candidate->width() * pack.logicalPerPhysical % pack.physicalPerLogical == 0;
        if (!sameKind || !largeEnough || !wholePixels) continue;
        size_t const waste = candidate->width() * candidate->height() - height * physicalWidth;
        if (best != pool.end() && waste >= bestWaste) continue;
        best = candidate;
        bestWaste = waste;
    }
    return best;
}

size_t smallestFreeId(std::map<size_t, Gles3Target> const& table) {
    size_t id = 0;
    for (auto const& entry : table) {
        if (entry.first != id) break;
        ++id;
    }
    return id;
}

// Makes a target and puts it into the table.
void addTarget(std::map<size_t, Gles3Target>& table, size_t id, size_t physicalWidth, std::vector<size_t> const& size,
               Packing const& pack, RenderBackend::ImageFiltering filtering, RenderBackend::ImageFormatType format) {
    try {
        table.emplace(id, Gles3Target(physicalWidth, size[1], {size[0], size[1]}, pack.logicalPerPhysical,
                                      pack.physicalPerLogical, format, filtering));
    } catch (VelmoraRangeException const& failure) {
        throw tooLarge(failure, pack);
    } catch (std::exception const& failure) {
        throw TargetFailure(failure.what());
    }
}

// 255 is full; values beyond are not clamped here.
std::array<float, 4> toColor(std::vector<size_t> const& color) {
    if (color.size() != 3 && color.size() != 4) throw VelmoraException("Invalid color", kClear);
    std::array<float, 4> rgba = {0.0F, 0.0F, 0.0F, 1.0F};
    std::transform(color.begin(), color.end(), rgba.begin(),
                   [](size_t component) { return static_cast<float>(component) / 255.0F; });
    return rgba;
}

void requireReadRectangle(std::vector<size_t> const& rect, char const* location) {
    if (rect.size() < 4) throw VelmoraException(kInvalidRectangle, location);
}

} // namespace

Gles3Target& Gles3RenderBackendInstance::findOrMakeTarget(size_t target) const {
    auto const found = targetTable_->find(target);
    if (found != targetTable_->end()) return found->second;
    return targetTable_->try_emplace(target).first->second;
}

Gles3Target& Gles3RenderBackendInstance::existingTarget(size_t target, char const* location) {
    auto const found = targetTable_->find(target);
    if (found == targetTable_->end()) throw VelmoraException("Target does not exist", location);
    return found->second;
}

Gles3Target& Gles3RenderBackendInstance::target(size_t target) {
    return findOrMakeTarget(target);
}

size_t Gles3RenderBackendInstance::createTarget(std::vector<size_t> const& size, size_t bits, bool,
                                                ImageFiltering filter, ImageFormatType format) {
    expectedState::forUploading();
    if (size.size() < 2) throw VelmoraException("size vector is too short", kCreateTarget);
    ImageFormatType const texels = format == RenderBackend::UNDEFINED ? format_ : format;
    Packing const pack = packing(texels, bits);
    size_t const scaledWidth = size[0] * pack.physicalPerLogical;
    if (scaledWidth % pack.logicalPerPhysical != 0)
        throw VelmoraException("no integer number of physical pixels for each logical pixel", kCreateTarget,
                               "target size=[" + std::to_string(size[0]) + "," + std::to_string(size[1]) + "]");
    size_t const physicalWidth = scaledWidth / pack.logicalPerPhysical;

    size_t const id = smallestFreeId(*targetTable_);
    auto const pooled = bestFit(*targetPool_, physicalWidth, size[1], pack, filter, texels);
    if (pooled == targetPool_->end()) {
        addTarget(*targetTable_, id, physicalWidth, size, pack, filter, texels);
        return id;
    }
    // A recycled target keeps its whole size and its old pixels.
    std::vector<size_t> whole = {pooled->width() * pack.logicalPerPhysical / pack.physicalPerLogical, pooled->height()};
    Gles3Target& recycled = targetTable_->emplace(id, std::move(*pooled)).first->second; // allocates before it moves
    targetPool_->erase(pooled);
    recycled.repack(std::move(whole), pack.logicalPerPhysical, pack.physicalPerLogical);
    return id;
}

// Targets move between pool and table: neither loses one if memory for the other runs out.
static_assert(std::is_nothrow_move_constructible_v<Gles3Target>);

void Gles3RenderBackendInstance::eraseTarget(size_t target) {
    Gles3Target& erased = findOrMakeTarget(target);
    try {
        targetPool_->push_back(std::move(erased)); // allocates first: if that fails, nothing has moved
    } catch (std::bad_alloc const&) {              // NOLINT(bugprone-empty-catch)
        // Destructors of hosts erase targets: one that cannot be pooled is released below instead.
    }
    targetTable_->erase(target);
}

void Gles3RenderBackendInstance::clearTargets() {
    targetPool_->clear();
}

std::vector<size_t> Gles3RenderBackendInstance::targetSize(size_t target) {
    Gles3Target const& found = findOrMakeTarget(target);
    if (found.ownSurface() == 0) return {context().width(), context().height()};
    return {found.width(), found.height()};
}

Gles3RenderBackendInstance::Extent Gles3RenderBackendInstance::physicalSize(size_t id, Gles3Target const& target) {
    if (target.ownSurface() != 0) return {target.width(), target.height()};
    std::vector<size_t> const size = targetSize(id);
    return {size[0], size[1]};
}

Gles3RenderBackendInstance::Extent Gles3RenderBackendInstance::referenceSize(size_t id, Gles3Target const& target) {
    if (target.ownSurface() == 0) return physicalSize(id, target);
    return {target.logicalSize()[0], target.logicalSize()[1]};
}

std::vector<size_t> Gles3RenderBackendInstance::targetAlignment(size_t target) {
    Gles3Target const& found = findOrMakeTarget(target);
    std::vector<size_t> alignment = found.logicalSize();
    alignment[0] = found.width() == 0 ? 1 : alignment[0] / found.width();
    alignment[1] = found.height() == 0 ? 1 : alignment[1] / found.height();
    return alignment;
}

RenderBackend::ImageFiltering Gles3RenderBackendInstance::targetFiltering(size_t target) const {
    return findOrMakeTarget(target).filtering();
}

void Gles3RenderBackendInstance::clear(size_t target, std::vector<size_t> const& color) {
    expectedState::forClearing();
    Gles3Target const& found = existingTarget(target, kClear);
    auto const [r, g, b, a] = toColor(color);
    found.clear(r, g, b, a);
}

void Gles3RenderBackendInstance::clearRect(size_t target, std::vector<size_t> const& color,
                                           std::vector<size_t> const& rect) {
    expectedState::forClearingRectangle();
    Gles3Target const& found = existingTarget(target, kClear);
    auto const [r, g, b, a] = toColor(color);
    if (rect.size() != 4) throw VelmoraException(kInvalidRectangle, kClear);
    found.clearRect(r, g, b, a, rect[0], rect[1], rect[2], rect[3]);
}

// Deliberate: the reading operations take {x, width, y, height}, clearRect takes {x, y, width, height}.
size_t Gles3RenderBackendInstance::getPixels(void* buffer, size_t bufferSize, size_t target,
                                             std::vector<size_t> const& rect) const {
    expectedState::forReading();
    requireReadRectangle(rect, kGetPixelsBuffer);
    return findOrMakeTarget(target).getPixels(buffer, bufferSize, rect[0], rect[2], rect[1], rect[3]);
}

std::vector<unsigned char> Gles3RenderBackendInstance::getPixels(size_t target, std::vector<size_t> const& rect) {
    expectedState::forReading();
    requireReadRectangle(rect, kGetPixelsVector);
    size_t const checked = getPixelsBufferSize(target, rect);
    Gles3Target const& found = findOrMakeTarget(target);
    // RGBA32 delivers 4 bytes per texel: a vector that had to grow to that size would be copied.
    std::vector<unsigned char> pixels(found.format() == RenderBackend::RGBA32 ? checked / 3 * 4 : checked);
    found.getPixels(pixels, rect[0], rect[2], rect[1], rect[3]);
    return pixels;
}

// Deliberate: 3 bytes per texel whatever the format, the same count that reading checks for.
size_t Gles3RenderBackendInstance::getPixelsBufferSize(size_t target, std::vector<size_t> const& rect) const {
    requireReadRectangle(rect, kGetPixelsBufferSize);
    return findOrMakeTarget(target).texelWidth(rect[1]) * rect[3] * 3;
}
