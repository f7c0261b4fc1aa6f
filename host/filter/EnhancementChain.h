#pragma once

#include "host/Geometry.h"
#include "host/filter/Enhancement.h"
#include "host/filter/FilterRunner.h"

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

/// Runs enhancements one after the other on the GPU, one part of a picture at a time, so that the parts agree with the
/// whole picture wherever they are cut.
///
/// An 8-bit picture is held as RGBA texels. A 16-bit picture starts as three planes, which are interleaved into three
/// 16-bit channels of 15 bits. Sharpening reduces it to 10 bits, the depth of that filter, a matrix to 12 or to what
/// leaves room for its sums. Tables and the equalisation end in 8 bits. So does every chain: deeper results are shown
/// as their upper byte.
///
///     apron of a step                            sharpening     2 pixels, beyond the picture its edge pixel again
///                                                equalising     to the next multiple of 40, and 40 more
///                                                others         nothing
///
/// GL thread only. Throws VelmoraException.
class EnhancementChain {
public:
    /// Side in pixels of the largest part that goes through the GPU, apron included: a 16-bit pixel takes two texels,
    /// and every OpenGL ES 3 has textures of 2048.
    static constexpr size_t kMaxSide = 1020;
    /// Bits per sample of the output.
    static constexpr unsigned kShownDepth = 8;
    /// Parts start at multiples of this, like the regions of the equalisation.
    static constexpr size_t kGrid = 40;

    EnhancementChain(std::shared_ptr<RenderBackendInstance> instance, std::vector<enhancement::Step> steps,
                     Size const& picture);

    /// The part of the picture that is read for `output`, apron included.
    Region inputFor(Region const& output) const;

    /// Side of the largest parts whose input is within kMaxSide, a multiple of kGrid; 0 if the apron is too large.
    static size_t partSide(std::vector<enhancement::Step> const& steps);

    /// partSide(), or HostError (usage) if it is 0.
    static size_t requiredPartSide(std::vector<enhancement::Step> const& steps);

    /// Returns RGBA texels of `output`, in the upper left corner of a target. `input` holds inputFor(output): RGBA
    /// texels if `depth` is 8, else three 16-bit channels of samples of `depth` bits, at most 15.
    OwnedTarget draw(OwnedTarget input, unsigned depth, Region const& output);

    /// As draw(), from RGBA texels of inputFor(output) to bytes, rows from the top.
    std::vector<unsigned char> run8(std::vector<unsigned char> const& rgba, Region const& output);

    /// Red, green and blue samples of 15 bits, little-endian. Rows of a plane have an even number of samples: one more
    /// than the region's width if that is odd.
    using Planes = std::array<std::vector<unsigned char>, 3>;
    std::vector<unsigned char> run15(Planes const& planes, Region const& output);
    /// The target of draw(), from planes of inputFor(output).
    OwnedTarget draw15(Planes const& planes, Region const& output);

private:
    // A part in a target.
    struct Part {
        OwnedTarget target;
        Region region; // in the picture
        unsigned depth;
    };

    Region around(Region const& output, enhancement::Step const& step) const;
    std::vector<Region> regionsUpTo(Region const& output) const;
    OwnedTarget finish(Part part, Region const& output);
    std::vector<unsigned char> texels(OwnedTarget const& target, Region const& output) const;

    // One overload per step. Each reads the apron that around() states.
    Part apply(Part part, enhancement::Sharpen const& sharpen, Region const& output);
    Part apply(Part part, enhancement::ColourMatrix const& matrix, Region const& output);
    Part apply(Part part, enhancement::Gamma const& gamma, Region const& output);
    Part apply(Part part, enhancement::LinearToSrgb const& step, Region const& output);
    Part apply(Part part, enhancement::Equalise const& equalise, Region const& output);
    Part apply(Part part, enhancement::Truncate const& truncate, Region const& output);

    Part sharpen8(OwnedTarget const& source, Size const& read, Region const& output, double gain);
    Part sharpen16(OwnedTarget const& source, Size const& read, Region const& output, double gain);
    Part map(Part const& part, Filter const& description, unsigned depth, SingleFilterParameters const& params = {});
    Part toDepth(Part part, unsigned depth);
    Part toShown(Part part);
    OwnedTarget interleave(Planes const& planes, Size const& size, enhancement::Truncate const* truncate);
    Planes planesOf(Part const& part) const;

    std::shared_ptr<RenderBackendInstance> instance_;
    FilterRunner targets_;
    std::vector<enhancement::Step> steps_;
    Size picture_;
};
