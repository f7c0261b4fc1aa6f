#include "apps/velmora/view/Ruler.h"

#include "apps/velmora/view/ScaleBar.h"

#include <cmath>

namespace {

constexpr int kDigits = 4;

} // namespace

void Ruler::toggle() {
    isOut_ = !isOut_;
    isDragged_ = false;
    line_.reset();
}

bool Ruler::handle(SDL_Event const& event, Camera const& camera, double pixelsPerUnit, bool overlayHasMouse) {
    if (!isOut_) return false;
    bool const isButton = event.type == SDL_MOUSEBUTTONDOWN || event.type == SDL_MOUSEBUTTONUP;
    if (isButton && event.button.button != SDL_BUTTON_LEFT) return false;
    if (event.type == SDL_MOUSEBUTTONDOWN && !overlayHasMouse) {
        Place const at = camera.pictureAt({event.button.x * pixelsPerUnit, event.button.y * pixelsPerUnit});
        line_ = Line{at, at};
        isDragged_ = true;
        return true;
    }
    if (!isDragged_) return false;
    if (event.type == SDL_MOUSEBUTTONUP) isDragged_ = false;
    if (event.type != SDL_MOUSEMOTION) return event.type == SDL_MOUSEBUTTONUP;
    line_->to = camera.pictureAt({event.motion.x * pixelsPerUnit, event.motion.y * pixelsPerUnit});
    // The cursor is followed by others as well.
    return false;
}

std::string Ruler::lengthOf(Line const& line, PictureInfo const& info) {
    double const across = line.to.x - line.from.x;
    double const down = line.to.y - line.from.y;
    if (info.micronsPerPixelX <= 0 || info.micronsPerPixelY <= 0) return pixelsText(std::hypot(across, down), kDigits);
    double const microns = std::hypot(across * info.micronsPerPixelX, down * info.micronsPerPixelY);
    return lengthText(microns, kDigits);
}
