// An input is a filter, and then operations of an instance with parameters of any size; GL is recorded.
#include "host/filter/FilterDescriptions.h"
#include "renderbackend/FilterParameters.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/gles3renderbackend/BackendFixture.h"
#include "tests/support/RecordingGl.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

namespace {

using backendtest::Sizes;
using fuzz::require;

constexpr size_t kOperations = 24;
constexpr size_t kTargets = 8;
constexpr size_t kSmall = 1 << 16; // what the model multiplies stays exact
constexpr GLint kLargestTexture = 256;

// What is on record of a draw, in clip space; single precision has 24 bits.
bool near(double expected, float found) {
    return std::abs(expected - static_cast<double>(found)) <= 1e-5 * (1 + std::abs(expected));
}

// An instance with nothing on it. Making one takes long, for its upload ring has megabytes: inputs share it.
struct Room {
    static constexpr size_t kInputs = 500; // after that a new one: the recorder keeps errors that nobody reads

    backendtest::Surface surface{64, 48};
    Gles3RenderBackend backend{RenderBackend::RGBA32, 100'000};
    std::shared_ptr<RenderBackendInstance> instance = backend.createInstance(surface);
    size_t inputs = 0;

    static RenderBackendInstance& forOneInput() {
        // Never destroyed: the recorder may be gone by then.
        static auto& room = *new std::unique_ptr<Room>();
        if (!room || ++room->inputs > kInputs) {
            room.reset();
            RecordingGl::instance().reset();
            RecordingGl::instance().setInteger(GL_MAX_TEXTURE_SIZE, kLargestTexture);
            room = std::make_unique<Room>();
        }
        return *room->instance;
    }
};

class Session {
public:
    explicit Session(fuzz::Input& input) : input_(input) {
        filter_ = description::byName(description::names().at(input_.below(description::names().size())));
        instance_->createFilterInstance(filter_);
    }
    Session(Session const&) = delete;
    Session& operator=(Session const&) = delete;
    ~Session() {
        instance_->destroyFilterInstance(filter_);
        for (size_t target = 0; target < kTargets + kOperations; ++target)
            instance_->targetSize(target); // makes those that are not there
        for (size_t target = 0; target < kTargets + kOperations; ++target)
            instance_->eraseTarget(target);
        instance_->clearTargets();
        instance_->clearTiles();
        instance_->targetSize(0); // the host's surface
    }

    void run() {
        for (size_t i = 0; i < kOperations && input_.left() > 0; ++i) {
            gl_.forgetCalls();
            step();
        }
    }

private:
    void step() {
        switch (input_.below(8)) {
        case 0:
            return createTarget();
        case 1:
            return setTile();
        case 2:
        case 3:
            return drawTiles();
        case 4:
        case 5:
            return executeFilter();
        case 6:
            return clear();
        default:
            known_.clear(); // a target out of the pool may be larger than was asked for
            fuzz::succeeds<VelmoraException>([&] { instance_->eraseTarget(anyTarget()); });
        }
    }

    size_t anyNumber() {
        size_t const kind = input_.below(16);
        if (kind == 0) return input_.number<size_t>();
        if (kind == 1) return std::numeric_limits<size_t>::max() - input_.byte();
        if (kind == 2) return input_.number<std::uint32_t>();
        return kind == 3 ? input_.number<std::uint16_t>() : input_.byte();
    }
    size_t anyTarget() { return input_.below(kTargets); }
    Sizes anyNumbers(size_t usual) {
        Sizes numbers(input_.below(16) == 0 ? input_.below(6) : usual);
        for (size_t& number : numbers)
            number = anyNumber();
        return numbers;
    }

    // Failures of making one leave as plain exceptions, tagged like all others.
    void createTarget() {
        Sizes const size = {anyNumber(), anyNumber()};
        constexpr size_t kBits[] = {8, 16, 24, 32, 48, 64, 0, 7};
        size_t const bits = kBits[input_.below(8)];
        auto const format = static_cast<RenderBackend::ImageFormatType>(input_.below(4));
        try {
            size_t const target = instance_->createTarget(size, bits, false, RenderBackend::NEAREST, format);
            if (bits == 32 && format == RenderBackend::RGBA32) known_[target] = size;
        } catch (std::exception const& error) {
            require(std::string(error.what()).rfind("#Name:", 0) == 0, "failures of targets are tagged");
        }
    }

    void setTile() {
        size_t const tile = input_.below(4);
        Sizes const size = {anyNumber(), anyNumber(), input_.below(6)};
        size_t const offset = anyNumber();
        std::vector<unsigned char> const pixels(input_.number<std::uint16_t>());
        fuzz::succeeds<VelmoraException>([&] { instance_->setTile(tile, pixels, size, offset); });
    }

    void clear() {
        size_t const target = anyTarget();
        Sizes const color = anyNumbers(3);
        Sizes const rectangle = anyNumbers(4);
        fuzz::succeeds<VelmoraException>([&] { instance_->clear(target, color); });
        fuzz::succeeds<VelmoraException>([&] { instance_->clearRect(target, color, rectangle); });
    }

    void drawTiles() {
        size_t const target = anyTarget();
        Sizes const range = anyNumbers(4);
        Sizes const canvas = anyNumbers(4);
        Sizes const tileSize = anyNumbers(2);
        Sizes const offsets = anyNumbers(2);
        Sizes blocks(input_.below(5));
        std::vector<Sizes> cells;
        for (size_t& block : blocks) {
            block = input_.below(4);
            cells.push_back({anyNumber(), anyNumber()});
        }
        bool const drawn = fuzz::succeeds<VelmoraException>(
            [&] { instance_->drawTiles(target, filter_, range, canvas, tileSize, cells, blocks, offsets); });
        if (!drawn) return require(gl_.draws().empty(), "what is refused draws nothing");
        auto const found = known_.find(target);
        if (found == known_.end() || found->second[0] == 0 || found->second[1] == 0) return;
        require(gl_.draws().size() == blocks.size(), "every tile is drawn once");
        for (size_t i = 0; i < blocks.size(); ++i)
            requireTile(gl_.draws()[i], range, canvas, tileSize, cells[i]);
    }

    // Where the numbers are such that all of it is exact.
    void requireTile(RecordingGl::Draw const& draw, Sizes const& range, Sizes const& canvas, Sizes const& tileSize,
                     Sizes const& cell) const {
        for (size_t const axis : {0u, 1u}) {
            size_t const start = range[2 * axis];
            size_t const end = range[2 * axis + 1];
            size_t const grid = canvas[2 * axis];
            if (end < start || std::max({end, grid, tileSize[axis], cell[axis]}) > kSmall) return;
            double const extent = static_cast<double>(end - start + 1);
            double const from = static_cast<double>(grid + cell[axis] * tileSize[axis]) - static_cast<double>(start);
            std::vector<float> const& geometry = draw.uniforms.at("a_geometry");
            require(near(2 * from / extent - 1, geometry.at(axis)), "a tile lies where its cell does");
            require(near(2 * static_cast<double>(tileSize[axis]) / extent, geometry.at(2 + axis)),
                    "a tile is as large as it is");
            require(draw.viewport.at(2 + axis) == static_cast<GLint>(end - start + 1), "the region fills the viewport");
        }
    }

    void executeFilter() {
        std::vector<FilterSource> sources(input_.below(4));
        for (FilterSource& source : sources)
            source = {anyTarget(), anyNumber(), anyNumber(), input_.below(4) == 0};
        Sizes const extent = {anyNumber(), anyNumber()};
        size_t const target = anyTarget();
        Sizes const clips = {anyNumber(), anyNumber(), anyNumber(), anyNumber()};
        Sizes const offset = anyNumbers(2);
        auto const params = parameters();
        bool const drawn = fuzz::succeeds<VelmoraException>([&] {
            instance_->executeFilter(filter_, sources, extent[0], extent[1], target, clips[0], clips[1], clips[2],
                                     clips[3], *params, offset);
        });
        if (drawn) requireOutput(target, extent, clips, offset);
    }

    void requireOutput(size_t target, Sizes const& extent, Sizes const& clips, Sizes const& offset) const {
        auto const found = known_.find(target);
        // The equalisation draws what it has computed, in its own way.
        if (found == known_.end() || filter_.name() == "FilterCLAHE" || gl_.draws().empty()) return;
        require(gl_.draws().size() == 1, "a filter draws once");
        Sizes const scale = {filter_.scaleXNum(), filter_.scaleYNum()};
        Sizes const borders = {filter_.invalidLeft() + filter_.invalidRight(),
                               filter_.invalidTop() + filter_.invalidBottom()};
        for (size_t const axis : {0u, 1u}) {
            size_t const size = found->second[axis];
            size_t const cut = borders[axis] + clips[2 * axis] + clips[2 * axis + 1];
            bool const small = std::max({extent[axis], offset[axis], clips[2 * axis], clips[2 * axis + 1]}) <= kSmall;
            if (size == 0 || !small || cut > extent[axis] * scale[axis]) return;
            std::vector<float> const& geometry = gl_.draws().front().uniforms.at("a_geometry");
            double const texels = static_cast<double>(size);
            require(near(2 * static_cast<double>(offset[axis]) / texels - 1, geometry.at(axis)),
                    "an output begins at its offset");
            require(near(2 * static_cast<double>(extent[axis] * scale[axis] - cut) / texels, geometry.at(2 + axis)),
                    "an output is the scaled input less what is cut off");
        }
    }

    std::shared_ptr<SingleFilterParameters> parameters() {
        if (!filter_.supportsParameters() || input_.below(16) == 0) return std::make_shared<SingleFilterParameters>();
        auto const record = filter_.getParametersObject();
        auto const number = [&] {
            return input_.flag() ? input_.number<double>() : static_cast<double>(input_.number<std::int16_t>()) / 64;
        };
        record->shiftBits = input_.number<std::int32_t>();
        if (auto* const sharpness = dynamic_cast<FilterSharpness8Params*>(record.get())) sharpness->gain = number();
        if (auto* const sharpness = dynamic_cast<FilterSharpness16Params*>(record.get())) sharpness->gain = number();
        if (auto* const clahe = dynamic_cast<FilterClaheParams*>(record.get())) clahe->value = number();
        if (auto* const matrix = dynamic_cast<Filter3x3MatrixParams*>(record.get())) {
            matrix->scale = number();
            for (std::int32_t& coefficient : matrix->matrix)
                coefficient = input_.number<std::int32_t>();
        }
        if (auto* const truncation = dynamic_cast<FilterTruncate16Params*>(record.get()))
            truncation->shift = anyNumber();
        if (dynamic_cast<FilterBlackWhiteGamma8Params*>(record.get()) != nullptr)
            return std::make_shared<FilterBlackWhiteGamma8Params>(number(), anyNumber(), anyNumber());
        if (dynamic_cast<FilterLinear16TosRGB8Params*>(record.get()) != nullptr)
            return std::make_shared<FilterLinear16TosRGB8Params>(number(), anyNumber(), anyNumber());
        return record;
    }

    fuzz::Input& input_;
    RecordingGl& gl_ = RecordingGl::instance();
    RenderBackendInstance* instance_ = &Room::forOneInput();
    Filter filter_;
    std::map<size_t, Sizes> known_; // targets of one texel per pixel, as they were asked for
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, size_t size) {
    static size_t objects = 0;
    fuzz::Input input(bytes, size);
    { Session(input).run(); }
    size_t const left = RecordingGl::instance().living().size();
    require(objects == 0 || left == objects, "no GL object of an input outlives it");
    objects = left;
    return 0;
}
