#pragma once

#include "apps/velmora/shared/ImageInput.h"
#include "apps/velmora/view/Script.h"
#include "host/display/DisplayRequest.h"
#include "host/filter/Enhancement.h"
#include "host/image/ImageSelection.h"
#include "host/output/OutputFile.h"
#include "host/view/Camera.h"
#include "host/view/PictureView.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What `velmora view` was asked for.
struct ViewerOptions {
    /// A place of the picture for the middle of the window, and a zoom.
    struct Start {
        double x = 0;
        double y = 0;
        double zoom = 1;

        void apply(Camera& camera) const {
            camera.magnifyTo(zoom, camera.middle());
            camera.lookAt({x, y});
        }
    };

    std::string image;        ///< an image or a store; empty: the built-in picture
    std::string annotations;  ///< a file of them; empty: none
    ImageSelection selection; ///< of an image
    DisplayRequest display;   ///< of an image's samples
    Size window{1280, 800};
    PictureView::Options picture;
    size_t bandBytes = 32 * 1000 * 1000; ///< budget of the backend's tile cache, which keeps what tiles are made of
    std::uint64_t cacheBytes = 0;        ///< that stores in the cache may take
    size_t importJobs = 0;               ///< as ImportOptions::jobs
    bool smooth = false;
    bool bare = false; ///< no overlay
    bool isLight = false;
    bool report = false;
    std::string screenshot;           ///< a PNG file; empty: none
    bool force = false;               ///< screenshots may replace files
    std::vector<std::string> sources; ///< files that no screenshot may replace, as OutputFile::sources
    std::optional<Start> start;
    std::vector<enhancement::Step> steps;
    std::vector<Script::Line> script;

    /// How samples are shown that are not imported first. Empty: enhancements are asked for, which look at the samples
    /// of more than 8 bits themselves.
    std::optional<DisplayRequest> shownAs() const {
        return steps.empty() || !display.isEmpty() ? std::optional(display) : std::nullopt;
    }

    /// How those of a store are shown that was made of the image: a range is in its samples already.
    std::optional<DisplayRequest> madeStoreShownAs() const {
        auto shown = shownAs();
        if (shown && selection.hasRange()) {
            shown->range = SampleRange{0, enhancement::kLargestCode};
            shown->automaticRange = false;
        }
        return shown;
    }

    /// Of the panels, and of what lies around the picture.
    void setTheme(bool light) {
        constexpr std::array<std::uint8_t, 3> kDark{32, 32, 32};
        constexpr std::array<std::uint8_t, 3> kLight{232, 232, 232};
        isLight = light;
        picture.background = light ? kLight : kDark;
    }

    imageinput::Colours colours() const { return shownAs() ? imageinput::Colours::Ranged : imageinput::Colours::Shown; }

    /// A picture of that name.
    OutputFile outputOf(std::string const& name, bool replaces) const {
        OutputFile file(name);
        file.replace = replaces;
        file.sources = sources;
        return file;
    }
};
