#include "host/image/FitsSamples.h"

#include <fitsio.h>

#include <array>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace {

constexpr int kMaxAxes = 9;
constexpr size_t kWidthAxis = 0;
constexpr size_t kHeightAxis = 1;
constexpr size_t kBandAxis = 2;
constexpr long long kMaxSide = 1LL << 31;
constexpr long long kMaxBands = 65535;

HostError failure(InputFile const& file, int status) {
    std::array<char, FLEN_STATUS> text{};
    fits_get_errstatus(status, text.data());
    // cfitsio's stack of messages would otherwise be kept for the next failure.
    fits_clear_errmsg();
    if (status == READ_ERROR) return readFailure(file.path(), text.data());
    return unreadableImage(file.path(), text.data());
}

struct Type {
    int bitpix;
    SampleType type;
    int datatype; // type requested from cfitsio
};

constexpr std::array<Type, 8> kTypes{{{BYTE_IMG, SampleType::Unsigned8, TBYTE},
                                      {SBYTE_IMG, SampleType::Signed8, TSBYTE},
                                      {SHORT_IMG, SampleType::Signed16, TSHORT},
                                      {USHORT_IMG, SampleType::Unsigned16, TUSHORT},
                                      {LONG_IMG, SampleType::Signed32, TINT},
                                      {ULONG_IMG, SampleType::Unsigned32, TUINT},
                                      {FLOAT_IMG, SampleType::Float32, TFLOAT},
                                      {DOUBLE_IMG, SampleType::Float64, TDOUBLE}}};

struct FreesFitsMemory {
    void operator()(char* text) const {
        int status = 0;
        fits_free_memory(text, &status);
    }
};

class FitsSamples final : public SampleSource {
public:
    FitsSamples(std::shared_ptr<InputFile> file, SampleRequest const& request) : file_(std::move(file)) {
        int status = 0;
        // By its name on the disk: other calls of cfitsio interpret brackets, addresses and compressed files.
        if (fits_open_diskfile(&fits_, file_->path().c_str(), READONLY, &status) != 0) throw failure(*file_, status);
        try {
            goToPage(request);
            readHeader();
        } catch (...) {
            close();
            throw;
        }
    }

    ~FitsSamples() override { close(); }

    ImageFacts const& facts() const override { return facts_; }

    void read(Region const& region, std::uint8_t* samples) override {
        size_t const sampleBytes = bytesOf(facts_.layout.type);
        size_t const bands = facts_.layout.bands;
        plane_.resize(region.width * region.height * sampleBytes);
        for (size_t band = 0; band < bands; ++band) {
            readPlane(region, band);
            std::uint8_t* to = samples + band * sampleBytes;
            for (size_t i = 0; i < plane_.size(); i += sampleBytes, to += bands * sampleBytes)
                std::copy_n(&plane_[i], sampleBytes, to);
        }
    }

private:
    using Axes = std::array<LONGLONG, kMaxAxes>;

    void close() {
        int status = 0;
        fits_close_file(fits_, &status);
        fits_clear_errmsg();
    }

    void check(int status) const {
        if (status != 0) throw failure(*file_, status);
    }

    // Whether the current HDU holds pixels.
    bool isPicture() {
        int status = 0;
        int type = 0;
        check(fits_get_hdu_type(fits_, &type, &status));
        if (type != IMAGE_HDU && fits_is_compressed_image(fits_, &status) == 0) return false;
        int axes = 0;
        check(fits_get_img_dim(fits_, &axes, &status));
        return axes > 0;
    }

    void goToPage(SampleRequest const& request) {
        int status = 0;
        int units = 0;
        check(fits_get_num_hdus(fits_, &units, &status));
        std::vector<int> pages;
        for (int unit = 1; unit <= units; ++unit) {
            check(fits_movabs_hdu(fits_, unit, nullptr, &status));
            if (isPicture()) pages.push_back(unit);
        }
        if (pages.empty()) throw imageNotRead(file_->path(), "it holds tables, but no picture");
        facts_.pages = pages.size();
        facts_.pageNoun = "pictures";
        size_t const page = requirePage(*file_, request, pages.size(), facts_.pageNoun);
        check(fits_movabs_hdu(fits_, pages[page - 1], nullptr, &status));
    }

    void readHeader() {
        facts_.format = "FITS";
        int status = 0;
        int axes = 0;
        Axes sides{};
        sides.fill(1);
        check(fits_get_img_dim(fits_, &axes, &status));
        if (axes > kMaxAxes) throw unreadableImage(file_->path(), "it has " + std::to_string(axes) + " axes");
        check(fits_get_img_sizell(fits_, kMaxAxes, sides.data(), &status));
        for (auto axis = static_cast<size_t>(axes); axis < sides.size(); ++axis)
            sides[axis] = 1;
        setSize(sides);
        setType();
        setBlank();
        setProperties();
        keepHeader();
        requireData();
    }

    void setSize(Axes const& sides) {
        for (size_t axis = kBandAxis + 1; axis < sides.size(); ++axis)
            if (sides[axis] != 1)
                throw imageNotRead(file_->path(), "it has " + std::to_string(sides[axis]) + " samples along its axis " +
                                                      std::to_string(axis + 1) + ", and three axes are read");
        bool const possible = sides[kWidthAxis] >= 1 && sides[kWidthAxis] <= kMaxSide && sides[kHeightAxis] >= 1 &&
                              sides[kHeightAxis] <= kMaxSide && sides[kBandAxis] >= 1 && sides[kBandAxis] <= kMaxBands;
        if (!possible) throw unreadableImage(file_->path(), "its header has no size that a picture can have");
        SampleFormat& layout = facts_.layout;
        layout.width = static_cast<size_t>(sides[kWidthAxis]);
        layout.height = static_cast<size_t>(sides[kHeightAxis]);
        layout.bands = static_cast<size_t>(sides[kBandAxis]);
        // FITS does not name colours: three planes are red, green and blue by custom.
        if (layout.bands == 1 || layout.bands == 3) layout.colours = layout.bands;
    }

    void setType() {
        int status = 0;
        int bitpix = 0;
        // Includes the scale that the header may have.
        check(fits_get_img_equivtype(fits_, &bitpix, &status));
        for (Type const& type : kTypes) {
            if (type.bitpix != bitpix) continue;
            facts_.layout.type = type.type;
            datatype_ = type.datatype;
            return;
        }
        throw imageNotRead(file_->path(), "its samples are integers of 64 bits, which are not read");
    }

    // BLANK names an integer as it lies in the file; samples are scaled.
    void setBlank() {
        if (facts_.layout.type == SampleType::Float32 || facts_.layout.type == SampleType::Float64) return;
        auto const blank = number("BLANK");
        if (blank) facts_.nodata = number("BZERO").value_or(0) + number("BSCALE").value_or(1) * *blank;
    }

    // Keywords of observatories.
    void setProperties() {
        struct Keyword {
            char const* key;
            char const* name;
        };
        std::array<Keyword, 8> const keywords{{{"OBJECT", "object"},
                                               {"TELESCOP", "telescope"},
                                               {"INSTRUME", "instrument"},
                                               {"FILTER", "filter"},
                                               {"EXPTIME", "exposure in seconds"},
                                               {"DATE-OBS", "date"},
                                               {"OBSERVER", "observer"},
                                               {"BUNIT", "unit of samples"}}};
        for (auto const& [key, name] : keywords) {
            int status = 0;
            std::array<char, FLEN_VALUE> value{};
            bool const found = fits_read_key(fits_, TSTRING, key, value.data(), nullptr, &status) == 0;
            fits_clear_errmsg();
            if (found && value.front() != 0) facts_.properties.push_back({name, value.data()});
        }
    }

    // All cards; of a compressed picture those that it had before.
    void keepHeader() {
        int status = 0;
        int cards = 0;
        char* text = nullptr;
        fits_convert_hdr2str(fits_, 0, nullptr, 0, &text, &cards, &status);
        fits_clear_errmsg();
        std::unique_ptr<char, FreesFitsMemory> const header(text);
        if (status == 0) facts_.blocks.push_back({picturemetadata::kFits, {}, {text, text + std::strlen(text)}});
    }

    std::optional<double> number(char const* key) const {
        int status = 0;
        double value = 0;
        bool const found = fits_read_key(fits_, TDOUBLE, key, &value, nullptr, &status) == 0;
        fits_clear_errmsg();
        return found ? std::optional(value) : std::nullopt;
    }

    // Sizes in a header are not trusted.
    void requireData() {
        int status = 0;
        if (fits_is_compressed_image(fits_, &status) != 0) return;
        int bitpix = 0;
        LONGLONG header = 0;
        LONGLONG start = 0;
        LONGLONG end = 0;
        check(fits_get_img_type(fits_, &bitpix, &status));
        check(fits_get_hduaddrll(fits_, &header, &start, &end, &status));
        SampleFormat const& layout = facts_.layout;
        auto const sampleBytes = static_cast<std::uint64_t>(std::abs(bitpix) / 8);
        std::uint64_t const held = file_->size() - std::min(file_->size(), static_cast<std::uint64_t>(start));
        // Divisions, because products may overflow.
        if (layout.height <= held / sampleBytes / layout.bands / layout.width) return;
        throw unreadableImage(file_->path(), "its header says " + std::to_string(layout.width) + " x " +
                                                 std::to_string(layout.height) + " pixels of " +
                                                 std::to_string(layout.bands) +
                                                 " bands, which are more than the file holds");
    }

    void readPlane(Region const& region, size_t band) {
        std::array<long, kMaxAxes> first{};
        std::array<long, kMaxAxes> last{};
        std::array<long, kMaxAxes> step{};
        first.fill(1);
        last.fill(1);
        step.fill(1);
        first[kWidthAxis] = static_cast<long>(region.x + 1);
        last[kWidthAxis] = static_cast<long>(region.x + region.width);
        first[kHeightAxis] = static_cast<long>(region.y + 1);
        last[kHeightAxis] = static_cast<long>(region.y + region.height);
        first[kBandAxis] = last[kBandAxis] = static_cast<long>(band + 1);
        int status = 0;
        check(fits_read_subset(fits_, datatype_, first.data(), last.data(), step.data(), nullptr, plane_.data(),
                               nullptr, &status));
    }

    std::shared_ptr<InputFile> file_;
    fitsfile* fits_ = nullptr;
    ImageFacts facts_;
    int datatype_ = 0;
    std::vector<std::uint8_t> plane_;
};

} // namespace

bool fitspicture::is(std::string const& start) {
    return start.rfind("SIMPLE  =", 0) == 0;
}

std::unique_ptr<SampleSource> fitspicture::open(std::shared_ptr<InputFile> const& file, SampleRequest const& request) {
    return std::make_unique<FitsSamples>(file, request);
}
