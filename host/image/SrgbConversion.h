#pragma once

#include "host/image/SampleSource.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// Colours of a picture in sRGB, by the ICC profile that its file embeds: relative colorimetric, by Little CMS. Grey
/// stays grey, samples keep their type, and alpha its values. Any thread.
class SrgbConversion {
public:
    /// What a file's profile asks for.
    struct Choice {
        std::shared_ptr<SrgbConversion const> conversion; ///< null: colours are shown as they lie in the file
        std::string profile;                              ///< its name, if it has one
        std::string reason; ///< why a profile is not followed; a clause for a user. Empty: there is none, or it is sRGB
    };

    /// Of 8 and 16 bits without sign, grey or RGB, with or without alpha. A profile whose colours are sRGB's but for a
    /// difference of 1 of 255 leaves samples alone. Colours of other spaces are converted elsewhere.
    static Choice of(ImageFacts const& facts);

    SrgbConversion(SrgbConversion const&) = delete;
    SrgbConversion& operator=(SrgbConversion const&) = delete;
    ~SrgbConversion();

    /// Whole pixels, interleaved; aligned as their samples are.
    void convert(std::uint8_t* samples, size_t pixels) const;

private:
    class Transform;

    explicit SrgbConversion(std::unique_ptr<Transform> transform, size_t pixelBytes);

    std::unique_ptr<Transform> transform_;
    size_t pixelBytes_;
    std::vector<std::uint8_t> greys_; // what each grey of 8 bits becomes; empty: other samples
};
