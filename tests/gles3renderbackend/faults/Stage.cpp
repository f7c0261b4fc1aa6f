#include "tests/gles3renderbackend/faults/Stage.h"

#include "host/filter/FilterDescriptions.h"
#include "host/filter/FilterRunner.h"
#include "renderbackend/DataEnvelopes.h"
#include "tests/support/NoiseBytes.h"

#include <utility>

namespace faults {

void Stage::clear() {
    sources_.clear();
    filters_.clear();
    instance_.reset();
}

void Stage::anew() {
    clear();
    instance_ = std::make_shared<WatchedInstance>(backend_.createInstance(surface_), surface_);
    instance_->clear(0, {70, 80, 90});
}

Filter const& Stage::filter(std::string const& name) {
    auto const found = filters_.find(name);
    if (found != filters_.end()) return found->second;
    Filter filter = description::byName(name);
    instance_->createFilterInstance(filter);
    return filters_.emplace(name, std::move(filter)).first->second;
}

size_t Stage::source(SampleLayout layout) {
    auto const found = sources_.find(layout);
    if (found != sources_.end()) return found->second;
    Size const size = sourceSize(layout);
    size_t const id = instance_->createTarget({size.width, size.height}, samplelayout::bitsPerPixel(layout), false,
                                              RenderBackend::NEAREST, samplelayout::format(layout));
    sources_[layout] = id;
    FilterRunner runner(instance_);
    bool const rgb = layout == SampleLayout::kRgb8;
    size_t const bytes = samplelayout::texels(layout, size.width) * size.height * (rgb ? 3 : 4);
    // Drawn into a target of the runner's own, and copied: what is drawn there it gives back.
    OwnedTarget const drawn = runner.upload(layout, size, noiseBytes(bytes, static_cast<std::uint32_t>(layout) + 1));
    Filter const& copy = runner.prepared(description::blitFilter(layout));
    runner.run(copy, {{{drawn.id(), 0, 0, false}}, size, {}, {0, 0}}, id);
    return id;
}

size_t Stage::storedEnvelopes() const {
    if (!instance_->dataEnvelopesSet(envelopes())) return 0;
    return std::as_const(*instance_).dataEnvelopes(envelopes())->count();
}

Bytes Stage::surfacePixels() const {
    return instance_->getPixels(0, {0, Surface::kTexels, 0, Surface::kTexels});
}

Bytes Stage::sourcePixels() const {
    Bytes all;
    for (auto const& [layout, id] : sources_) {
        Bytes const pixels = instance_->getPixels(id, {0, sourceSize(layout).width, 0, sourceSize(layout).height});
        all.insert(all.end(), pixels.begin(), pixels.end());
    }
    return all;
}

} // namespace faults
