#pragma once

#include "host/Geometry.h"
#include "host/filter/Enhancement.h"
#include "host/filter/FilterRunner.h"

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

/// Runs enhancements one after the other on the GPU, on a part of a picture at a time, so that the parts agree with the
/// whole picture wherever they are cut.
///
/// A picture of 8 bits lies as RGBA texels. One of 16 bits starts as three planes, which are interleaved, and lies as
/// three 16-bit channels of 15 bits; sharpening takes it to 10 bits, which is what that filter sees, a matrix to 12 or
/// what leaves its sums room. Tables and the equalisation end in 8 bits, and so does every chain: what has more is
/// shown as its upper byte.
///
///     what a step reads around its output        sharpening     2 pixels, beyond the picture its edge pixel again
///                                                equalising     to the next multiple of 40, and 40 more
///                                                others         nothing
///
/// GL thread only. Throws VelmoraException.
class EnhancementChain {
public:
    /// Side in pixels of the largest part that goes through the GPU, with what is read around it: a pixel of 16 bits
    /// takes two texels, and every OpenGL ES 3 has textures of 2048.
    static constexpr size_t kMaxSide = 1020;
    /// Bits of a sample of what comes out.
    static constexpr unsigned kShownDepth = 8;
    /// Parts start at multiples of this, as the regions of the equalisation do.
    static constexpr size_t kGrid = 40;

    EnhancementChain(std::shared_ptr<RenderBackendInstance> instance, std::vector<enhancement::Step> steps,
                     Size const& picture);

    /// The part of the picture that is read for `output`.
    Region inputFor(Region const& output) const;

    /// Side of the largest parts whose input is within kMaxSide, a multiple of kGrid; 0 where the steps read too much.
    static size_t partSide(std::vector<enhancement::Step> const& steps);

    /// partSide(), or HostError (usage) where the steps leave no room.
    static size_t requiredPartSide(std::vector<enhancement::Step> const& steps);

    /// RGBA texels of `output`, in the upper left corner of a target, from one that holds inputFor(output): RGBA texels
    /// where `depth` is 8, else three 16-bit channels of samples of so many bits, at most 15.
    OwnedTarget draw(OwnedTarget input, unsigned depth, Region const& output);

    /// The same, rows from the top, from RGBA texels of inputFor(output).
    std::vector<unsigned char> run8(std::vector<unsigned char> const& rgba, Region const& output);

    /// The same from red, green and blue samples of 15 bits, little-endian. Rows of a plane have an even number of
    /// samples: one more than the region's width where that is odd.
    using Planes = std::array<std::vector<unsigned char>, 3>;
    std::vector<unsigned char> run15(Planes const& planes, Region const& output);
    /// The same as draw() gives it.
    OwnedTarget draw15(Planes const& planes, Region const& output);

private:
    // A part in a target.
    struct Part {
        OwnedTarget target;
        Region region; // of the picture
        unsigned depth;
    };

    Region around(Region const& output, enhancement::Step const& step) const;
    std::vector<Region> regionsUpTo(Region const& output) const;
    OwnedTarget finish(Part part, Region const& output);
    std::vector<unsigned char> texels(OwnedTarget const& target, Region const& output) const;

    // One per step. Each reads what around() says.
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
