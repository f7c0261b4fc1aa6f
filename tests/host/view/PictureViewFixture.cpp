#include "tests/host/view/PictureViewFixture.h"

#include "tests/host/store/LevelModel.h"

#include <algorithm>
#include <cmath>

using testpictures::Picture;
using namespace std::chrono_literals;

std::vector<pictureview::Level> pictureview::levelsOf(Picture const& picture, size_t levels) {
    auto const all = levelmodel::levelsOf(picture, levels);
    std::vector<Level> result;
    for (size_t level = 0; level < all.size(); ++level)
        result.push_back(
            {((picture.width - 1) >> level) + 1, ((picture.height - 1) >> level) + 1, picture.bands, all[level]});
    return result;
}

std::vector<std::uint8_t> pictureview::frameOf(std::vector<Level> const& levels, View const& view) {
    Level const& level = levels.at(view.zoom.level());
    double const samplesPerPixel = static_cast<double>(view.zoom.samples()) / static_cast<double>(view.zoom.pixels());
    std::vector<std::uint8_t> frame;
    for (size_t y = 0; y < view.height; ++y) {
        for (size_t x = 0; x < view.width; ++x) {
            double const column =
                std::floor((static_cast<double>(view.x) + static_cast<double>(x) + 0.5) * samplesPerPixel);
            double const row =
                std::floor((static_cast<double>(view.y) + static_cast<double>(y) + 0.5) * samplesPerPixel);
            bool const inside = column >= 0 && row >= 0 && column < static_cast<double>(level.width) &&
                                row < static_cast<double>(level.height);
            if (!inside) {
                frame.insert(frame.end(), {kBackground[0], kBackground[1], kBackground[2], 255});
                continue;
            }
            std::uint8_t const* const pixel =
                &level.bytes[(static_cast<size_t>(row) * level.width + static_cast<size_t>(column)) * level.bands];
            bool const grey = level.bands <= 2;
            bool const alpha = level.bands == 2 || level.bands == 4;
            frame.insert(frame.end(), {pixel[0], pixel[grey ? 0 : 1], pixel[grey ? 0 : 2],
                                       alpha ? pixel[level.bands - 1] : std::uint8_t{255}});
        }
    }
    return frame;
}

size_t pictureview::backgroundPixels(std::vector<std::uint8_t> const& frame) {
    size_t count = 0;
    for (size_t i = 0; i < frame.size(); i += 4)
        count += std::equal(kBackground.begin(), kBackground.end(), &frame[i]) ? 1U : 0U;
    return count;
}

std::string pictureview::describe(View const& view) {
    return "zoom " + std::to_string(view.zoom.value()) + ", " + std::to_string(view.width) + " x " +
           std::to_string(view.height) + " at " + std::to_string(view.x) + "," + std::to_string(view.y);
}

StoreInfo PictureViewFixture::import(Picture const& picture, size_t tileSize) const {
    ImportOptions options;
    options.tileSize = tileSize;
    options.replace = true;
    return testpictures::import(picture, path(), options);
}

PictureView::Options PictureViewFixture::options() {
    PictureView::Options options;
    options.threads = 2;
    options.background = pictureview::kBackground;
    return options;
}

PictureView::Options PictureViewFixture::forgetful() {
    PictureView::Options options = PictureViewFixture::options();
    options.gpuBytes = options.hostBytes = 1;
    return options;
}

PictureViewFixture::Bytes PictureViewFixture::completed(PictureView& view) {
    while (!view.complete()) {
        if (!view.advance(50ms)) view.wait(50ms);
    }
    return view.pixels();
}

PictureViewFixture::Bytes PictureViewFixture::completed(PictureView& view, View const& wanted) {
    view.show(wanted);
    return completed(view);
}

void PictureViewFixture::settle(PictureView& view) {
    while (view.statistics().waiting != 0) {
        view.wait(50ms);
        view.advance(50ms);
    }
}

View PictureViewFixture::randomView(PictureInfo const& info) {
    double const zoom = std::exp2(std::uniform_real_distribution<>(-static_cast<double>(info.levels) - 1, 3)(random_));
    View view;
    view.zoom = Zoom::nearest(zoom, info.levels);
    view.width = 1 + random_() % 200;
    view.height = 1 + random_() % 150;
    auto const place = [&](size_t length, size_t frame) {
        auto const all = static_cast<std::int64_t>(static_cast<double>(length) * view.zoom.value());
        auto const margin = static_cast<std::int64_t>(frame / 2);
        return std::uniform_int_distribution<std::int64_t>(-margin, std::max(all - margin, -margin))(random_);
    };
    view.x = place(info.width, view.width);
    view.y = place(info.height, view.height);
    return view;
}
