#include "apps/velmora/view/ViewerReport.h"

#include <cstdio>
#include <sys/resource.h>

void ViewerReport::print() const {
    printTime("first picture", firstPicture_);
    printTime("full detail", fullDetail_);
    std::printf("%-24s%zu\n", "frames drawn", frames_);
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%-24s%.1f MB\n", "largest resident memory", static_cast<double>(usage.ru_maxrss) * 1024 / 1e6);
}

void ViewerReport::printTime(char const* name, std::optional<Clock::time_point> const& time) const {
    if (time)
        std::printf("%-24s%.1f ms\n", name, std::chrono::duration<double, std::milli>(*time - start_).count());
    else
        std::printf("%-24snever\n", name);
}
