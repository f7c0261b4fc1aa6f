#pragma once

#include "renderbackend/Export.h"
#include "renderbackend/FilterSource.h"
#include "renderbackend/RenderBackend.h"
#include "renderbackend/SingleFilterParameters.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class RenderBackendInstance;

/// One image operation, described independently of a GPU: its name, borders, input grid, scale and inputs.
///
///     input grid along x:   P, P + S, P + 2S, ...       P = inputPosX0, S = inputPosXStride
///     output extent:        w = input * scaleXNum / scaleXDen - invalidLeft - invalidRight
///
/// A value: copies share the key and the instance. bind() or RenderBackendInstance::createFilterInstance makes it
/// runnable. Ranges are {xStart, xEnd, yStart, yEnd} in logical pixels, ends inclusive. All arithmetic is unsigned
/// 64-bit; the constructors do not check denominators, strides and alignments for 0, and must not be given it. Any
/// thread, except bind() and execute(), which run on the GL thread.
class VELMORA_EXPORT Filter {
public:
    using ParametersFactory = std::function<std::shared_ptr<SingleFilterParameters>()>;

    /// The identity on 8-bit RGBA pixels, without a name.
    Filter();

    /// A filter on 8-bit RGBA pixels: alignments 1, nothing signed.
    Filter(std::string const& name, size_t invalidLeft, size_t invalidRight, size_t invalidTop, size_t invalidBottom,
           size_t inputPosX0, size_t inputPosXStride, size_t inputPosY0, size_t inputPosYStride, size_t scaleXNum,
           size_t scaleXDen, size_t scaleYNum, size_t scaleYDen, size_t numTexturesIn,
           RenderBackend::ImageFiltering filtering);

    /// Throws VelmoraException if scale times stride is no whole number, if alignment and input grid do not fit, and if
    /// signedIn has another length than numTexturesIn.
    Filter(std::string const& name, size_t invalidLeft, size_t invalidRight, size_t invalidTop, size_t invalidBottom,
           size_t inputPosX0, size_t inputPosXStride, size_t inputPosY0, size_t inputPosYStride, size_t scaleXNum,
           size_t scaleXDen, size_t scaleYNum, size_t scaleYDen, size_t numTexturesIn, size_t bitsPerPixelIn,
           size_t bitsPerPixelOut, size_t componentsIn, size_t componentsOut, size_t alignXIn, size_t alignXOut,
           size_t alignYIn, size_t alignYOut, std::vector<bool> signedIn, bool signedOut, size_t bitDepthIn,
           RenderBackend::ImageFiltering filtering);

    Filter(Filter const&) = default;
    Filter& operator=(Filter const&) = default;
    Filter(Filter&&) = default;
    Filter& operator=(Filter&&) = default;
    virtual ~Filter();

    /// A copy of the Filter part, also for an object of a derived class.
    virtual std::unique_ptr<Filter> clone() const;

    /// Output pixels at each border that the filter cannot compute.
    virtual size_t invalidLeft() const;
    virtual size_t invalidRight() const;
    virtual size_t invalidTop() const;
    virtual size_t invalidBottom() const;

    /// Whether input and output differ in their grids, that is, are not pixel for pixel the same.
    virtual bool changesGeometry() const;

    /// The input range that an output range needs. Throws "Input out of bounds" if the output starts inside the invalid
    /// border; starts from 2^63 count as negative there. Starts left of the input grid's origin wrap. Throws "a scale
    /// of 0 has no input range" if a scale's numerator is 0.
    virtual std::vector<size_t> inputRange(std::vector<size_t> const& outputRange) const;
    /// The output range that an input range yields; an empty one has an end before its start. Throws "Input out of
    /// bounds" if the input starts before the grid's origin, compared unsigned, and "an output alignment of 0 has no
    /// output range" if a setter made it 0.
    virtual std::vector<size_t> outputRange(std::vector<size_t> const& inputRange) const;

    size_t inputPosX0() const { return inputPosX0_; }
    size_t inputPosXStride() const { return inputPosXStride_; }
    size_t inputPosY0() const { return inputPosY0_; }
    size_t inputPosYStride() const { return inputPosYStride_; }
    size_t scaleXNum() const { return scaleXNum_; }
    size_t scaleXDen() const { return scaleXDen_; }
    size_t scaleYNum() const { return scaleYNum_; }
    size_t scaleYDen() const { return scaleYDen_; }
    size_t numTexturesIn() const { return numTexturesIn_; }
    size_t bitsPerPixelIn() const { return bitsPerPixelIn_; }
    size_t bitsPerPixelOut() const { return bitsPerPixelOut_; }
    size_t componentsIn() const { return componentsIn_; }
    size_t componentsOut() const { return componentsOut_; }
    size_t alignXIn() const { return alignXIn_; }
    size_t alignXOut() const { return alignXOut_; }
    size_t alignYIn() const { return alignYIn_; }
    size_t alignYOut() const { return alignYOut_; }
    /// The larger of the input stride and the input alignment.
    size_t effectiveAlignX() const { return effectiveAlignX_; }
    size_t effectiveAlignY() const { return effectiveAlignY_; }
    /// Whether the samples of input i are signed; i must be below numTexturesIn().
    bool signedIn(size_t i) const { return signedIn_[i]; }
    bool signedOut() const { return signedOut_; }
    /// Significant bits per input sample.
    size_t bitDepthIn() const { return bitDepthIn_; }
    RenderBackend::ImageFiltering filtering() const { return filtering_; }
    std::string const& name() const { return name_; }
    bool supportsParameters() const { return static_cast<bool>(parametersFactory_); }
    /// The key of the filter's program in the instance; empty until instantiated.
    std::shared_ptr<size_t> instanceKey() const { return instanceKey_; }
    /// The instance that runs the filter; empty until bound.
    std::shared_ptr<RenderBackendInstance> instance() const { return instance_; }
    /// A counter from 0, which every call increments.
    std::uint64_t nextSerial() { return serial_++; }

    /// Setting an input alignment recomputes the effective alignment of its axis.
    void setAlignXIn(size_t alignment);
    void setAlignXOut(size_t alignment) { alignXOut_ = alignment; }
    void setAlignYIn(size_t alignment);
    void setAlignYOut(size_t alignment) { alignYOut_ = alignment; }
    void setInstanceKey(std::shared_ptr<size_t> key) { instanceKey_ = std::move(key); }
    void setParametersFactory(ParametersFactory factory) { parametersFactory_ = std::move(factory); }

    /// A new record for this filter. Throws "Filter does not support parameters" without a factory.
    std::shared_ptr<SingleFilterParameters> getParametersObject() const;

    /// GL thread. Makes the instance create the filter's program, and keeps the instance for execute().
    void bind(std::shared_ptr<RenderBackendInstance> const& instance);

    /// GL thread. Runs the filter in the bound instance: RenderBackendInstance::executeFilter.
    /// clip: {left, right, top, bottom}; offset: {x, y}.
    void execute(std::vector<FilterSource> const& sources, size_t inputW, size_t inputH, size_t destination,
                 std::vector<size_t> const& clip, SingleFilterParameters const& params,
                 std::vector<size_t> offset) const;

protected:
    /// Releases the instance; the key stays.
    void forgetInstance() { instance_.reset(); }

private:
    void validate() const;

    ParametersFactory parametersFactory_;
    std::string name_;
    size_t invalidLeft_;
    size_t invalidRight_;
    size_t invalidTop_;
    size_t invalidBottom_;
    size_t inputPosX0_;
    size_t inputPosXStride_;
    size_t inputPosY0_;
    size_t inputPosYStride_;
    size_t scaleXNum_;
    size_t scaleXDen_;
    size_t scaleYNum_;
    size_t scaleYDen_;
    size_t numTexturesIn_;
    size_t bitsPerPixelIn_;
    size_t bitsPerPixelOut_;
    size_t componentsIn_;
    size_t componentsOut_;
    size_t alignXIn_;
    size_t alignXOut_;
    size_t alignYIn_;
    size_t alignYOut_;
    size_t effectiveAlignX_;
    size_t effectiveAlignY_;
    std::vector<bool> signedIn_;
    bool signedOut_;
    std::shared_ptr<size_t> instanceKey_;
    std::shared_ptr<RenderBackendInstance> instance_;
    size_t bitDepthIn_;
    RenderBackend::ImageFiltering filtering_;
    std::uint64_t serial_ = 0;
};
