#pragma once

#include "renderbackend/ConcurrentStagingBuffer.h"
#include "renderbackend/Export.h"
#include "renderbackend/FilterSource.h"
#include "renderbackend/RenderBackend.h"
#include "renderbackend/SingleFilterParameters.h"

#include <cstddef>
#include <memory>
#include <typeinfo>
#include <utility>
#include <vector>

class DataEnvelopes;
class Filter;
class RenderContext;

/// A host's interface: it stores tiles, makes targets, draws, runs filters and reads pixels back.
///
/// Every operation runs on the thread whose GL context is current; only ConcurrentStagingBuffer::write may run on
/// others. Failures are thrown as VelmoraException. Sizes and positions have the horizontal value first. createTarget
/// assigns the ids of targets, the host those of tiles. The order of the operations is fixed: it is the order of the
/// virtual table.
class VELMORA_EXPORT RenderBackendInstance {
public:
    using ImageFormatType = RenderBackend::ImageFormatType;
    using ImageFiltering = RenderBackend::ImageFiltering;
    using BufferType = RenderBackend::BufferType;

    /// The context must outlive the instance.
    RenderBackendInstance(size_t id, RenderContext const& context);
    RenderBackendInstance(RenderBackendInstance const&) = default;
    RenderBackendInstance(RenderBackendInstance&&) = default;
    RenderBackendInstance& operator=(RenderBackendInstance const&) = delete;
    virtual ~RenderBackendInstance();

    /// Type of one component in host memory.
    virtual std::type_info const& pixelTypeid() const = 0;
    /// Size of one component in host memory, in bytes.
    virtual size_t pixelSize() const = 0;
    /// Components per pixel of the host's surface.
    virtual size_t numComponents() const = 0;

    /// Fills a target. color: 3 or 4 components, 255 = full.
    virtual void clear(size_t target, std::vector<size_t> const& color) = 0;
    /// Fills a rectangle of a target. rect: {x, y, width, height} in logical pixels.
    virtual void clearRect(size_t target, std::vector<size_t> const& color, std::vector<size_t> const& rect) = 0;

    /// Draws cached tiles into a target, one quad per tile; a tile that is not cached is drawn transparent black. The
    /// filter has one input. No parameters are sent: a filter with parameters draws with those of its last run, a table
    /// filter with whatever texture is bound to unit 1. range: {x0, x1, y0, y1}, inclusive, the region of the image
    /// that fills the viewport, in logical pixels; canvasRange: in the same order, only x0 and y0 count, the origin of
    /// the tile grid; tileSize: {width, height} in logical pixels; blockCoords: {column, row} per tile, at least as
    /// many as blocks, not checked; blocks: tile ids; offsets: {x, y}, logical position of the region inside the
    /// target, missing values count as 0. Rows keep GL's order in every target: on the host's surface, target 0, the
    /// first row of the region is the bottom one.
    virtual void drawTiles(size_t target, Filter const& tileShader, std::vector<size_t> const& range,
                           std::vector<size_t> const& canvasRange, std::vector<size_t> const& tileSize,
                           std::vector<std::vector<size_t>> const& blockCoords, std::vector<size_t> const& blocks,
                           std::vector<size_t> const& offsets) = 0;

    /// Reads pixels into `buffer` and returns the bytes written. rect: {x, width, y, height}; x and y count texels,
    /// width logical pixels. Rows start with the bottom row of the GL surface. The capacity is checked with 3 bytes per
    /// texel whatever the format: reading an RGBA32 target needs 4 bytes per texel, which the caller must provide.
    /// Throws "buffer too small provided N required : M" below that, and "Invalid rectangle" for fewer than four
    /// values.
    virtual size_t getPixels(void* buffer, size_t bufferSize, size_t target, std::vector<size_t> const& rect) const = 0;
    /// The same into a new vector of the right size. Throws "Invalid rectangle".
    virtual std::vector<unsigned char> getPixels(size_t target, std::vector<size_t> const& rect) = 0;
    /// The capacity in bytes that the buffer form checks: 3 bytes per texel, whatever the format. Throws "Invalid
    /// rectangle".
    virtual size_t getPixelsBufferSize(size_t target, std::vector<size_t> const& rect) const = 0;

    /// Stores a tile. size: {width, height, components}; 3 and 4 components are 8-bit RGB and RGBA, 1 component is one
    /// 16-bit sample per pixel, little-endian, on an RGBA32 instance only. Two such samples share a texel, so the width
    /// must be even: with an odd one, which is not refused, row r is read r samples too early. Reading starts at byte
    /// `offset` of pixels; a vector that ends there or before allocates a new texture without filling it.
    ///
    /// Erase a tile before it is set in another size. Onto a stored tile
    ///   - a size that is as large or larger in either direction makes a new texture, as for a new tile;
    ///   - a smaller one in both directions goes into the upper left corner of an RGBA texture (stored with 4
    ///     components, or 1), which keeps its size and is drawn whole. Four bytes per texel are read, whatever the
    ///     components say;
    ///   - the same onto an RGB texture is refused by GL: the old pixels stay and GL_INVALID_OPERATION is pending.
    ///
    /// Throws "Can't set tile pixels with this size" for other components, "pixel vector is shorter than its size says"
    /// for a vector that ends inside the tile, and VelmoraRangeException "requested buffer size exceeds maximum
    /// supported size". A new tile then exists, empty, and a stored one is unchanged; but after the last of the three
    /// erase the tile before setting it again, for its texture reports the refused size.
    virtual void setTile(size_t tile, std::vector<unsigned char> const& pixels, std::vector<size_t> const& size,
                         size_t offset) = 0;
    /// Whether the tile is in the cache.
    virtual bool tileSet(size_t tile) const = 0;
    /// Protects a cached tile from eviction; a flag, not a count. No effect on a tile that is not cached.
    virtual void lockTile(size_t tile) = 0;
    virtual void unlockTile(size_t tile) = 0;

    /// The envelope set stored under an id; throws if there is none.
    virtual std::shared_ptr<DataEnvelopes const> dataEnvelopes(std::vector<unsigned char> const& id) const = 0;
    /// Stores an envelope set: per element 16-bit values, which are ignored, and grid cells {column, row}.
    virtual void dataEnvelopes(
        std::vector<unsigned char> const& id,
        std::vector<std::pair<std::vector<unsigned short>, std::vector<std::vector<unsigned int>>>> const& data) = 0;
    virtual bool dataEnvelopesSet(std::vector<unsigned char> const& id) const = 0;
    /// Protects an envelope set from eviction; a flag, not a count.
    virtual void lockDataEnvelopes(std::vector<unsigned char> const& id) = 0;
    virtual void unlockDataEnvelopes(std::vector<unsigned char> const& id) = 0;

    /// Makes a target and returns its id, the smallest that is free. size: {width, height} in logical pixels; bits: per
    /// logical pixel, not 0. No operation makes mipmaps: a TRILINEAR target is drawn into and read like any other, but
    /// filters that sample it get black. Several logical pixels of few bits share a texel, one of many bits takes
    /// several; only the horizontal axis is packed. A suitable erased target is recycled, with its old pixels and its
    /// own, possibly larger size. The unnamed flag is ignored.
    virtual size_t createTarget(std::vector<size_t> const& size, size_t bits, bool, ImageFiltering filter,
                                ImageFormatType format) = 0;
    /// No effect: the GL stream orders drawing.
    virtual void finalizeDrawSequence() = 0;
    /// Number of free tile slots; unlimited, because the budget counts bytes.
    virtual size_t freeSlots() const = 0;
    virtual bool targetReady(size_t target) const = 0;
    /// {width, height} in physical texels; for target 0 those of the host's surface. As in every lookup of a target
    /// except clear, clearRect and drawTiles, an unknown id makes an empty target under that id.
    virtual std::vector<size_t> targetSize(size_t target) = 0;
    /// {logical pixels per texel along x, along y}, the quotient rounded down: 0 if a pixel takes several texels.
    virtual std::vector<size_t> targetAlignment(size_t target) = 0;
    virtual ImageFiltering targetFiltering(size_t target) const = 0;
    /// Moves a target into the pool from which createTarget recycles; releases it if there is no memory for that.
    /// Throws nothing for a target that exists.
    virtual void eraseTarget(size_t target) = 0;
    /// Erases the tiles first <= id < last, locked ones too; returns the bytes released.
    virtual size_t eraseTiles(size_t first, size_t last) = 0;
    virtual size_t eraseTile(size_t tile) = 0;
    /// Destroys the pooled targets; living ones stay.
    virtual void clearTargets() = 0;
    virtual void waitForTarget(size_t target) = 0;
    /// Erases every tile, except one whose id is SIZE_MAX; returns the bytes released.
    virtual size_t clearTiles() = 0;

    /// Runs a filter once. sources: one per input, in the order of the inputs; surplus ones are bound to the texture
    /// units that follow and change nothing. inputW, inputH: the input area in logical pixels; the four clips cut
    /// logical pixels off the output; offset: {x, y}, texels of the destination where the output starts. The
    /// destination must not be among the sources: the result of a target that samples itself is undefined. On the
    /// host's surface, target 0, rows are mirrored, so that the first one is at the top, and offset.y counts from the
    /// top; the filters without a model-view (FilterRGBA8ToYCoCg16, both colour matrices, both passes of the 16-bit
    /// sharpening) keep GL's order there as well.
    virtual void executeFilter(Filter const& filter, std::vector<FilterSource> const& sources, size_t inputW,
                               size_t inputH, size_t destination, size_t clipLeft, size_t clipRight, size_t clipTop,
                               size_t clipBottom, SingleFilterParameters const& params,
                               std::vector<size_t> const& offset) = 0;
    /// Compiles the filter's program and writes the key, and the filter class's adjustments, back into `filter`. A
    /// filter that already has a key is left unchanged. The key is a number of this instance: with an instance that is
    /// made anew take fresh filters, because an old one runs whatever program has its number there.
    virtual void createFilterInstance(Filter& filter) = 0;
    /// Drops the filter's program. The filter keeps its key: using it again throws, instantiating it does nothing.
    virtual void destroyFilterInstance(Filter& filter) = 0;
    /// Draws the shape of a MaskFilterParams into a target, coloured from `source`, which is another target. range:
    /// {x0, x1, y0, y1} of the target in image coordinates, of which only x0 and y0 count: cell coordinates of the
    /// shape, one per texel of the target, also if a texel holds several pixels or a pixel takes several texels. On the
    /// host's surface, target 0, the rows are mirrored. The record's envelopes are those that dataEnvelopes returned,
    /// without const:
    ///
    ///     params.envelopes = std::const_pointer_cast<DataEnvelopes>(instance.dataEnvelopes(id));
    ///
    /// Neither parameters nor any state of blending, scissor, depth, stencil or culling are set: the host's state
    /// applies.
    virtual void maskRange(size_t source, size_t target, Filter const& maskShader, std::vector<size_t> const& range,
                           SingleFilterParameters const& params) = 0;

    /// Reserves room for a tile that another thread will fill, at most 4 MiB, which is not checked. size: {width,
    /// height, 3}, or {width, height, 1} with an even width on an RGBA32 instance; others are refused, four components
    /// too. The type is stored and has no effect. Uploads the closed parts of the ring whose writers are done; if the
    /// whole ring is taken it waits, without a limit, for the writers of its oldest part. The default supports none and
    /// returns an empty pointer.
    virtual std::unique_ptr<ConcurrentStagingBuffer> concurrentStagingBuffer(size_t targetOrTileId, BufferType type,
                                                                             std::vector<size_t> const& size);
    /// Makes sure that a written buffer reaches its texture; takes the buffer. Returns at once if the tile is cached or
    /// its part of the ring is closed; otherwise closes that part and waits, without a limit, for all its writers.
    /// Tiles that came this way are locked until unlockTile. The default destroys the buffer and returns true.
    virtual bool synchronizeConcurrentStagingBuffer(std::unique_ptr<ConcurrentStagingBuffer>&& buffer);

protected:
    size_t id() const { return id_; }
    RenderContext const& context() const { return context_; }

private:
    size_t id_;
    RenderContext const& context_;
};
