#include "host/image/SampleSource.h"

#include "host/HostError.h"
#include "host/image/BmpFile.h"
#include "host/image/FitsSamples.h"
#include "host/image/JxlSamples.h"
#include "host/image/PnmFile.h"
#include "host/image/VipsFile.h"
#include "host/image/VipsSamples.h"

#include <algorithm>
#include <array>

SampleSource::~SampleSource() = default;

std::unique_ptr<SampleSource> openSamples(std::shared_ptr<InputFile> const& file, SampleRequest const& request) {
    std::array<std::uint8_t, 16> start{};
    auto const got = file->readAt(0, start.data(), start.size());
    file->rethrow();
    if (got == 0) throw imageNotRead(file->path(), "the file is empty; copy or save the picture once more");
    std::string const magic(start.begin(), start.begin() + std::max<std::int64_t>(got, 0));
    if (fitspicture::is(magic)) return fitspicture::open(file, request);
    if (pnmfile::is(magic)) return pnmfile::open(file, request);
    if (bmpfile::is(magic)) return bmpfile::open(file, request);
    if (vipsfile::is(magic)) return vipsfile::open(file, request);
    if (jxlpicture::is(magic)) return jxlpicture::open(file, request);
    return vipssamples::open(file, request);
}

size_t requirePage(InputFile const& file, SampleRequest const& request, size_t pages, std::string const& noun) {
    size_t const page = request.page.value_or(1);
    if (page >= 1 && page <= pages) return page;
    std::string const held = pages == 1 ? "one picture" : std::to_string(pages) + " " + noun;
    throw HostError(HostError::Kind::Usage, "'" + file.path() + "' holds " + held + "; --page is 1" +
                                                (pages > 1 ? " to " + std::to_string(pages) : ""));
}
