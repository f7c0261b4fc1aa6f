#include "host/view/PictureStages.h"

#include <stdexcept>

std::vector<ChannelDisplay> const& PictureStages::channels() const {
    static std::vector<ChannelDisplay> const none;
    return none;
}

std::vector<Histogram> const& PictureStages::histograms() const {
    static std::vector<Histogram> const none;
    return none;
}

bool PictureStages::display(std::vector<ChannelDisplay> const& /*channels*/) {
    throw std::logic_error("samples of this picture are shown as they are");
}

bool PictureStages::moveTo(StackPosition const& /*position*/) {
    throw std::logic_error("this picture has one slice, and one time");
}
