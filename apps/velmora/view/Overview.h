#pragma once

#include "apps/velmora/view/OverlayTexture.h"
#include "host/view/PictureView.h"

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

/// The whole picture, small, with the enhancements and channels of the large one. Its view is its own, on the same
/// instance, so that the window's view never shows anything else. GL thread only. Throws what PictureView throws.
class Overview {
public:
    /// Along the longer side.
    static constexpr size_t kMaxSide = 200;

    /// Nothing is opened until advance(). Holes, background and interruption are as in the options.
    Overview(std::shared_ptr<RenderBackendInstance> instance, PictureSource source,
             PictureView::Options const& options);

    /// Enhancements from now on. The texture stays as it is until they are drawn.
    void enhance(std::vector<enhancement::Step> const& steps);
    /// Shows the channels otherwise from now on, as PictureView::display().
    void display(std::vector<ChannelDisplay> const& channels);
    /// Shows another slice or time from now on, as PictureView::moveTo().
    void moveTo(StackPosition const& position);
    /// As PictureView::setBackground().
    void setBackground(std::array<std::uint8_t, 3> const& colour);
    /// Loads and draws what is missing, for about so long. Whether the texture has changed.
    bool advance(std::chrono::milliseconds time);
    /// Whether the texture has the enhancements and channels.
    bool complete() const { return complete_; }

    OverlayTexture const& texture() const { return texture_; }
    /// Null where nothing was opened yet.
    PictureView const* picture() const { return picture_.get(); }

private:
    void open();

    std::shared_ptr<RenderBackendInstance> instance_;
    PictureSource source_;
    PictureView::Options options_;
    std::vector<enhancement::Step> steps_;
    std::vector<ChannelDisplay> channels_;  // none: as they open
    std::optional<StackPosition> position_; // empty: as it opens
    std::unique_ptr<PictureView> picture_;
    OverlayTexture texture_;
    bool complete_ = false;
};
