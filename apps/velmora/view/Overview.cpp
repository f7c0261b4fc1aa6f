#include "apps/velmora/view/Overview.h"

#include "host/view/Camera.h"

#include <utility>

namespace {

// Coarse levels are small: nothing needs to be kept of what one drawing takes.
PictureView::Options small(PictureView::Options options) {
    options.threads = 1;
    options.hostBytes = 1;
    options.gpuBytes = 1;
    options.enhanceCoarserLevels = false;
    return options;
}

} // namespace

Overview::Overview(std::shared_ptr<RenderBackendInstance> instance, PictureSource source,
                   PictureView::Options const& options)
    : instance_(std::move(instance)), source_(std::move(source)), options_(small(options)) {}

void Overview::enhance(std::vector<enhancement::Step> const& steps) {
    complete_ = false;
    steps_ = steps;
    if (picture_) picture_->enhance(steps_);
}

void Overview::display(std::vector<ChannelDisplay> const& channels) {
    complete_ = false;
    channels_ = channels;
    if (picture_) picture_->display(channels_);
}

void Overview::moveTo(StackPosition const& position) {
    complete_ = false;
    position_ = position;
    if (picture_) picture_->moveTo(position);
}

void Overview::setBackground(std::array<std::uint8_t, 3> const& colour) {
    options_.background = colour;
    if (picture_) picture_->setBackground(colour);
    complete_ = false;
}

bool Overview::advance(std::chrono::milliseconds time) {
    if (complete_) return false;
    if (!picture_) open();
    if (!picture_->advance(time)) picture_->wait(time);
    if (!picture_->complete()) return false;
    Size const size = {picture_->view().width, picture_->view().height};
    texture_.set(picture_->pixels(), size);
    complete_ = true;
    return true;
}

void Overview::open() {
    auto picture = std::make_unique<PictureView>(instance_, source_, options_);
    picture->enhance(steps_);
    if (!channels_.empty()) picture->display(channels_);
    if (position_) picture->moveTo(*position_);
    Camera const whole(picture->info(), {kMaxSide, kMaxSide});
    View view = whole.view();
    view.x = 0;
    view.y = 0;
    view.width = whole.size().width;
    view.height = whole.size().height;
    picture->show(view);
    picture_ = std::move(picture);
}
