#include "renderbackend/Filter.h"

#include "renderbackend/Precondition.h"
#include "renderbackend/RenderBackendInstance.h"
#include "renderbackend/VelmoraException.h"

#include <algorithm>
#include <utility>

namespace {

constexpr char const* kConstructor =
    "Filter::Filter(std::string const& name, size_t invalidLeft,size_t invalidRight,size_t invalidTop, "
    "size_t invalidBottom, size_t inputPosX0,size_t inputPosXStride, size_t inputPosY0, size_t inputPosYStride,"
    "size_t scaleXNum, size_t scaleXDen, size_t scaleYNum, size_t scaleYDen,size_t numTexturesIn, "
    "size_t bitsPerPixelIn, size_t bitsPerPixelOut,size_t componentsIn, size_t componentsOut, size_t alignXIn,"
    "size_t alignXOut,size_t alignYIn, size_t alignYOut,std::vector<bool> signedIn,bool signedOut,"
    "size_t bitDepthIn, RenderBackend::ImageFiltering filtering) ";
constexpr char const* kShortConstructor =
    "Filter::Filter(std::string const& name, size_t invalidLeft, size_t invalidRight, size_t invalidTop, "
    "size_t invalidBottom, size_t inputPosX0, size_t inputPosXStride, size_t inputPosY0, size_t inputPosYStride, "
    "size_t scaleXNum, size_t scaleXDen, size_t scaleYNum, size_t scaleYDen, size_t numTexturesIn, "
    "RenderBackend::ImageFiltering filtering)";
constexpr char const* kInputRange =
    "std::vector<size_t> Filter::inputRange(std::vector<size_t> const& outputRange) const";
constexpr char const* kOutputRange =
    "std::vector<size_t> Filter::outputRange(std::vector<size_t> const& inputRange) const";
constexpr char const* kExecute =
    "void Filter::execute(std::vector<FilterSource> const& sources, size_t inputW, size_t inputH, "
    "size_t destination, std::vector<size_t> const& clip, std::vector<size_t> offset) const";

bool alignmentFitsGrid(size_t alignment, size_t stride, size_t origin) {
    if (alignment <= stride) return stride % alignment == 0 && origin % alignment == 0;
    return alignment % stride == 0 && origin % stride == 0;
}

void requireRange(std::vector<size_t> const& range, char const* location) {
    if (range.size() < 4) throw VelmoraException("a range needs four values: xStart, xEnd, yStart, yEnd", location);
}

struct Interval {
    size_t start;
    size_t end;
};

// One axis of a filter; both range computations are the same arithmetic on x and on y.
struct Axis {
    size_t invalidBefore;
    size_t invalidAfter;
    size_t gridOrigin;
    size_t gridStep;
    size_t scaleNum;
    size_t scaleDen;
    size_t outputAlignment;

    Interval input(Interval out) const {
        size_t const start = (out.start - invalidBefore) * scaleDen / scaleNum;
        size_t const end = ((invalidAfter + out.end) * scaleDen + scaleNum - 1) / scaleNum;
        size_t const fromOrigin = start - gridOrigin; // wraps left of the origin, as all of this arithmetic does
        size_t const pastEnd = end + gridStep - gridOrigin;
        return {fromOrigin - fromOrigin % gridStep + gridOrigin, pastEnd - pastEnd % gridStep + gridOrigin - 1};
    }

    // Aligned to absolute multiples: unlike the input grid the output grid has no origin.
    Interval output(Interval in) const {
        size_t const start = (in.start * scaleNum + scaleDen - 1) / scaleDen + invalidBefore + outputAlignment - 1;
        size_t const pastEnd = scaleNum * in.end / scaleDen - invalidAfter + 1;
        return {start - start % outputAlignment, pastEnd - pastEnd % outputAlignment - 1};
    }
};

} // namespace

Filter::Filter() : Filter({}, 0, 0, 0, 0, 0, 1, 0, 1, 1, 1, 1, 1, 1, RenderBackend::NEAREST) {}

Filter::Filter(std::string const& name, size_t invalidLeft, size_t invalidRight, size_t invalidTop,
               size_t invalidBottom, size_t inputPosX0, size_t inputPosXStride, size_t inputPosY0,
               size_t inputPosYStride, size_t scaleXNum, size_t scaleXDen, size_t scaleYNum, size_t scaleYDen,
               size_t numTexturesIn, RenderBackend::ImageFiltering filtering)
    : Filter(name, invalidLeft, invalidRight, invalidTop, invalidBottom, inputPosX0, inputPosXStride, inputPosY0,
             inputPosYStride, scaleXNum, scaleXDen, scaleYNum, scaleYDen, numTexturesIn, 32, 32, 4, 4, 1, 1, 1, 1,
             std::vector<bool>(numTexturesIn, false), false, 8, filtering) {}

Filter::Filter(std::string const& name, size_t invalidLeft, size_t invalidRight, size_t invalidTop,
               size_t invalidBottom, size_t inputPosX0, size_t inputPosXStride, size_t inputPosY0,
               size_t inputPosYStride, size_t scaleXNum, size_t scaleXDen, size_t scaleYNum, size_t scaleYDen,
               size_t numTexturesIn, size_t bitsPerPixelIn, size_t bitsPerPixelOut, size_t componentsIn,
               size_t componentsOut, size_t alignXIn, size_t alignXOut, size_t alignYIn, size_t alignYOut,
               std::vector<bool> signedIn, bool signedOut, size_t bitDepthIn, RenderBackend::ImageFiltering filtering)
    : name_(name),
      invalidLeft_(invalidLeft),
      invalidRight_(invalidRight),
      invalidTop_(invalidTop),
      invalidBottom_(invalidBottom),
      inputPosX0_(inputPosX0),
      inputPosXStride_(inputPosXStride),
      inputPosY0_(inputPosY0),
      inputPosYStride_(inputPosYStride),
      scaleXNum_(scaleXNum),
      scaleXDen_(scaleXDen),
      scaleYNum_(scaleYNum),
      scaleYDen_(scaleYDen),
      numTexturesIn_(numTexturesIn),
      bitsPerPixelIn_(bitsPerPixelIn),
      bitsPerPixelOut_(bitsPerPixelOut),
      componentsIn_(componentsIn),
      componentsOut_(componentsOut),
      alignXIn_(alignXIn),
      alignXOut_(alignXOut),
      alignYIn_(alignYIn),
      alignYOut_(alignYOut),
      effectiveAlignX_(std::max(inputPosXStride, alignXIn)),
      effectiveAlignY_(std::max(inputPosYStride, alignYIn)),
      signedIn_(std::move(signedIn)),
      signedOut_(signedOut),
      bitDepthIn_(bitDepthIn),
      filtering_(filtering) {
    validate();
}

Filter::~Filter() = default;

void Filter::validate() const {
    precondition(scaleXDen_ != 0 && scaleYDen_ != 0, "the denominators of a filter's scale are not 0");
    precondition(inputPosXStride_ != 0 && inputPosYStride_ != 0, "a filter's strides are not 0");
    precondition(alignXIn_ != 0 && alignXOut_ != 0 && alignYIn_ != 0 && alignYOut_ != 0,
                 "a filter's alignments are not 0");
    // Deliberate: the x message alone carries the signature of the shorter constructor; hosts match on these texts.
    if (scaleXNum_ * inputPosXStride_ % scaleXDen_ != 0)
        throw VelmoraException("error x stride times x scale factor is not integer", kShortConstructor);
    if (scaleYNum_ * inputPosYStride_ % scaleYDen_ != 0)
        throw VelmoraException("error y stride times y scale factor is not integer", kConstructor);
    // "compatibe" is part of the fixed text.
    if (!alignmentFitsGrid(alignXIn_, inputPosXStride_, inputPosX0_) ||
        !alignmentFitsGrid(alignYIn_, inputPosYStride_, inputPosY0_))
        throw VelmoraException("input alignment not compatibe with input stride", kConstructor);
    if (signedIn_.size() != numTexturesIn_)
        throw VelmoraException("signed vector size does not match number of input textures", kConstructor);
}

std::unique_ptr<Filter> Filter::clone() const {
    return std::make_unique<Filter>(*this);
}

size_t Filter::invalidLeft() const {
    return invalidLeft_;
}

size_t Filter::invalidRight() const {
    return invalidRight_;
}

size_t Filter::invalidTop() const {
    return invalidTop_;
}

size_t Filter::invalidBottom() const {
    return invalidBottom_;
}

bool Filter::changesGeometry() const {
    bool const borders = invalidLeft_ != 0 || invalidRight_ != 0 || invalidTop_ != 0 || invalidBottom_ != 0;
    bool const scales = scaleXNum_ != scaleXDen_ || scaleYNum_ != scaleYDen_;
    bool const grid = inputPosX0_ != 0 || inputPosXStride_ != 1 || inputPosY0_ != 0 || inputPosYStride_ != 1;
    bool const alignments = alignXIn_ != 1 || alignXOut_ != 1 || alignYIn_ != 1 || alignYOut_ != 1;
    return borders || scales || grid || alignments;
}

std::vector<size_t> Filter::inputRange(std::vector<size_t> const& outputRange) const {
    requireRange(outputRange, kInputRange);
    // The constructor permits it: such a filter has an output of size 0, and no input range yields one.
    if (scaleXNum_ == 0 || scaleYNum_ == 0) throw VelmoraException("a scale of 0 has no input range", kInputRange);
    // Deliberate: signed here, unsigned in outputRange. A start that wrapped below zero is caught here and only here.
    auto const startsInBorder = [](size_t start, size_t border) {
        return static_cast<std::int64_t>(start) < static_cast<std::int64_t>(border);
    };
    if (startsInBorder(outputRange[0], invalidLeft_) || startsInBorder(outputRange[2], invalidTop_))
        throw VelmoraException("Input out of bounds", kInputRange);
    Axis const xAxis{invalidLeft_, invalidRight_, inputPosX0_, effectiveAlignX_, scaleXNum_, scaleXDen_, alignXOut_};
    Axis const yAxis{invalidTop_, invalidBottom_, inputPosY0_, effectiveAlignY_, scaleYNum_, scaleYDen_, alignYOut_};
    Interval const x = xAxis.input({outputRange[0], outputRange[1]});
    Interval const y = yAxis.input({outputRange[2], outputRange[3]});
    return {x.start, x.end, y.start, y.end};
}

std::vector<size_t> Filter::outputRange(std::vector<size_t> const& inputRange) const {
    requireRange(inputRange, kOutputRange);
    if (alignXOut_ == 0 || alignYOut_ == 0)
        throw VelmoraException("an output alignment of 0 has no output range", kOutputRange);
    if (inputRange[0] < inputPosX0_ || inputRange[2] < inputPosY0_)
        throw VelmoraException("Input out of bounds", kOutputRange);
    Axis const xAxis{invalidLeft_, invalidRight_, inputPosX0_, effectiveAlignX_, scaleXNum_, scaleXDen_, alignXOut_};
    Axis const yAxis{invalidTop_, invalidBottom_, inputPosY0_, effectiveAlignY_, scaleYNum_, scaleYDen_, alignYOut_};
    Interval const x = xAxis.output({inputRange[0], inputRange[1]});
    Interval const y = yAxis.output({inputRange[2], inputRange[3]});
    return {x.start, x.end, y.start, y.end};
}

void Filter::setAlignXIn(size_t alignment) {
    alignXIn_ = alignment;
    effectiveAlignX_ = std::max(inputPosXStride_, alignment);
}

void Filter::setAlignYIn(size_t alignment) {
    alignYIn_ = alignment;
    effectiveAlignY_ = std::max(inputPosYStride_, alignment);
}

std::shared_ptr<SingleFilterParameters> Filter::getParametersObject() const {
    if (!parametersFactory_)
        throw VelmoraException("Filter does not support parameters",
                               "std::shared_ptr<SingleFilterParameters> Filter::getParametersObject ()");
    return parametersFactory_();
}

void Filter::bind(std::shared_ptr<RenderBackendInstance> const& instance) {
    if (!instance)
        throw VelmoraException("no backend instance to bind to",
                               "void Filter::bind(std::shared_ptr<RenderBackendInstance> const& instance)");
    instance->createFilterInstance(*this); // assigns to the whole filter, so the instance is set afterwards
    instance_ = instance;
}

void Filter::execute(std::vector<FilterSource> const& sources, size_t inputW, size_t inputH, size_t destination,
                     std::vector<size_t> const& clip, SingleFilterParameters const& params,
                     std::vector<size_t> offset) const { // NOLINT(performance-unnecessary-value-param): fixed signature
    if (!instance_) throw VelmoraException("filter has not been instantiated in a RenderBackend", kExecute);
    if (clip.size() < 4) throw VelmoraException("a clip needs four values: left, right, top, bottom", kExecute);
    instance_->executeFilter(*this, sources, inputW, inputH, destination, clip[0], clip[1], clip[2], clip[3], params,
                             offset);
}
