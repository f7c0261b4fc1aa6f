#pragma once

#include "gles3renderbackend/resources/Gles3Shader.h"

#include <array>
#include <cstdint>
#include <string>

/// A colour matrix on pixels of three signed 16-bit channels. With a Filter3x3MatrixParams.
class Gles3Filter3x3Matrix16 : public Gles3Shader {
public:
    explicit Gles3Filter3x3Matrix16(Filter& filter);

    void uploadParameters(SingleFilterParameters const& params) override;

private:
    /// Column c: the four bytes of coefficient 3 * c + channel, least significant first, all of its sign.
    void setMatrix(std::string const& name, std::array<std::int32_t, 9> const& coefficients, size_t channel) const;
};
