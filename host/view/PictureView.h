#pragma once

#include "host/filter/Enhancement.h"
#include "host/view/FrameComposer.h"
#include "host/view/PictureSource.h"
#include "host/view/PictureStages.h"
#include "host/view/TilePipeline.h"
#include "host/view/View.h"
#include "renderbackend/RenderBackendInstance.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Shows a picture: threads read the tiles that a view needs, the GPU rebuilds a store's levels from them, runs the
/// enhancements and draws a frame.
///
///     show(view)      says what is wanted; what waits and is not wanted any more is dropped
///     advance(time)   takes in what the threads have finished, for about so long
///     frame()         draws what is there: where a level is not there yet, the next coarser one that is
///
/// The first frame after show() may be the background alone; from the moment the coarsest level is there, no pixel
/// inside the picture is. A frame that is complete() does not depend on what was shown before, on the budgets or on the
/// threads.
///
/// GL thread only. Every operation throws HostError, what TileStore throws, and VelmoraException.
class PictureView {
public:
    struct Options {
        size_t threads = 0;                   ///< that read tiles; 0: as many as the machine has cores
        size_t hostBytes = 256 * 1000 * 1000; ///< for tiles of a store that are decompressed
        size_t gpuBytes = 256 * 1000 * 1000;  ///< for rebuilt tiles; what one frame needs may be more
        bool enhanceCoarserLevels = true;     ///< to show them until finer ones arrive
        std::array<std::uint8_t, 3> background = {32, 32, 32};
        /// What is damaged is shown as a hole, striped, and so is what cannot be rebuilt or enhanced without it; else
        /// it is thrown.
        bool showHoles = false;
        bool forCodes = false;              ///< of a picture of 16 bits: codes() is wanted, and no frame
        std::function<void()> interruption; ///< called now and then while a store is read on the GL thread; may throw
    };

    /// Opens a store, of which nothing is read yet but its description and which areas are empty, or takes a pyramid.
    PictureView(std::shared_ptr<RenderBackendInstance> const& instance, PictureSource const& source,
                Options const& options);
    PictureView(PictureView const&) = delete;
    PictureView& operator=(PictureView const&) = delete;

    PictureInfo const& info() const { return stages_->info(); }
    /// Pixels of the whole picture at a zoom.
    Size sizeAt(Zoom const& zoom) const;

    /// Enhancements from now on. Throws HostError (usage) where they read too much around a pixel.
    void enhance(std::vector<enhancement::Step> const& steps);
    /// The channels that display() sets; none where samples are shown as they are.
    std::vector<ChannelDisplay> const& channels() const { return stages_->channels(); }
    /// The same with the ranges that all but 8 bits open with.
    std::vector<ChannelDisplay> automaticChannels() const { return stages_->automaticChannels(); }
    /// How often the samples of each channel occur in a coarse level.
    std::vector<Histogram> const& histograms() const { return stages_->histograms(); }
    /// What lies around the picture, and below what is transparent, from the next frame on.
    void setBackground(std::array<std::uint8_t, 3> const& colour) { background_ = colour; }
    /// Shows the channels otherwise from now on: as many as channels() has, of the same bands.
    void display(std::vector<ChannelDisplay> const& channels);
    /// The slices and times among which the picture can be moved.
    ImageStack stack() const { return stages_->stack(); }
    StackPosition position() const { return stages_->position(); }
    /// Shows another slice or time from now on, which the stack has.
    void moveTo(StackPosition const& position);
    void show(View const& view) { pipeline_.want(view); }
    /// The one that was shown last; at first one without pixels.
    View const& view() const { return pipeline_.view(); }
    /// Whether something new can be seen.
    bool advance(std::chrono::milliseconds time) { return pipeline_.advance(time); }
    /// Waits for a thread to finish a tile, for at most so long; returns at once where nothing is in work.
    void wait(std::chrono::milliseconds time) { stages_->wait(time); }
    /// Whether frame() shows the view as it is wanted, but for holes.
    bool complete() const { return pipeline_.complete(); }
    /// Whether the view has any.
    bool hasHoles() const { return !pipeline_.holes().empty(); }
    /// What was found damaged so far.
    Damages const& damages() const { return damages_; }

    /// Draws the view. The id of a target of RGBA texels whose upper left corner is the frame, the top row first; valid
    /// until the next call.
    size_t frame();
    /// frame(), read back: width * height RGBA pixels, rows from the top.
    std::vector<std::uint8_t> pixels();
    /// Of a view that is made for it, lies within the picture and is complete: its samples, 16 bits, width * height
    /// pixels of the picture's bands, interleaved, rows from the top; not enhanced, each the nearest. Those of coarser
    /// levels are on the picture's own scale.
    std::vector<std::uint16_t> codes();
    /// Of a store: the samples of a pixel within the picture, of all bands and with all their bits, where a view of the
    /// picture's own pixels has them; else nothing.
    std::optional<std::vector<std::uint16_t>> samplesAt(PicturePixel const& pixel) { return stages_->samplesAt(pixel); }
    /// Draws the last frame into the host's surface, upright, its upper left corner at the surface's.
    void present();
    /// width * height bytes: 255 where the store has coefficients other than 0 for the view's level, else 0, off by
    /// less than 8 pixels: a mask that the backend draws from the data envelopes. Rows from the top.
    std::vector<std::uint8_t> dataMask();

    struct Statistics {
        size_t tilesOnGpu = 0; ///< rebuilt
        size_t gpuBytes = 0;
        size_t hostBytes = 0; ///< decompressed tiles that are kept
        size_t waiting = 0;   ///< tiles wanted that are not there yet
    };
    Statistics statistics() const;

private:
    void renew(bool loadsAgain);
    std::vector<Region> holes() const;
    OwnedTarget drawn();

    std::shared_ptr<RenderBackendInstance> instance_;
    std::array<std::uint8_t, 3> background_;
    FilterRunner targets_;
    std::unique_ptr<PictureStages> stages_;
    Damages damages_;
    TilePipeline pipeline_;
    FrameComposer composer_;
    std::optional<OwnedTarget> frame_;
};
