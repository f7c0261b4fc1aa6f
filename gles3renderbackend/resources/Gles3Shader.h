#pragma once

#include "gles3renderbackend/resources/GlName.h"
#include "gles3renderbackend/resources/Gles3Buffer.h"
#include "renderbackend/Filter.h"
#include "renderbackend/FilterSource.h"
#include "renderbackend/SingleFilterParameters.h"

#include <array>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

class EnabledArrays;
class Gles3RenderBackendInstance;
class Gles3Target;
class TextureRanges;
struct TextureRange;

/// One linked GLSL ES program and the code to run it once over a target: the base of every filter class. It carries a
/// copy of its filter description. Construction is all or nothing. GL thread only.
///
/// Per-input names end in the input's index, two digits at least: "s_texture00", "a_texRange00", "a_texscale00",
/// "a_texturecoordinates00".
class Gles3Shader : public Filter {
public:
    /// Compiles and links. Throws VelmoraException with the log and, if a stage does not compile, its source with
    /// numbered lines; every GL object made so far is deleted then. The source is in what(); formatExceptionMessage
    /// ends it at its first "#", which is that of "#version".
    Gles3Shader(std::string const& vertexSource, std::string const& fragmentSource, Filter& filter);
    /// A shader without a program, for a filter that computes elsewhere: program() is 0.
    explicit Gles3Shader(Filter& filter);

    Gles3Shader(Gles3Shader const&) = delete;
    Gles3Shader& operator=(Gles3Shader const&) = delete;
    ~Gles3Shader() override;

    /// Runs the program once. `filter` is the caller's description: its borders and scales give the extent of the
    /// output, while the input ranges follow the shader's own. inputW, inputH and the clips count logical pixels,
    /// `offset` texels of the destination, {x, y}: two values, which is not checked here. Leaves bound: the program,
    /// the framebuffer, both quad buffers, one texture per source. docs/GL_STATE.md lists the other state that it
    /// expects.
    virtual void draw(std::vector<FilterSource> const& sources, size_t inputW, size_t inputH, size_t destination,
                      size_t clipLeft, size_t clipRight, size_t clipTop, size_t clipBottom,
                      SingleFilterParameters const& params, std::vector<size_t> const& offset,
                      Gles3RenderBackendInstance& instance, Filter const& filter);
    /// Sets the uniforms of one run; called by draw with the program in use. The base has none.
    virtual void uploadParameters(SingleFilterParameters const& params);

    /// The GL name of the program, 0 without one.
    GLuint program() const { return program_ ? *program_ : 0; }

    /// Throws VelmoraException "fewer sources than the filter has inputs" under `location` if the program samples an
    /// input of `filter`, the caller's description, that has no source: it would show whatever texture its unit was
    /// left with. The program samples "s_texture00", "s_texture01" and so on, up to the first name that it lacks.
    void requireSources(size_t sources, Filter const& filter, char const* location) const;
    /// Throws VelmoraException "a filter without a program draws no tiles" under `location` if the class has none.
    void requireProgram(char const* location) const;

    /// For a table of shaders that the instance owns: a shader that held its instance would keep both alive for ever.
    using Filter::forgetInstance;

    /// The location of an active attribute or uniform, -1 for a name that the program lacks. Makes no GL call.
    GLint attributeLocation(std::string const& name) const;
    GLint uniformLocation(std::string const& name) const;
    /// Every active uniform with its location.
    std::map<std::string, GLint> const& uniforms() const { return uniforms_; }

    /// "a_geometry": the unit quad's place in clip space. Makes the program current, as the next two do.
    void setGeometry(double x, double y, double w, double h);
    /// "a_modelView", column-major. Never set if its location is 0.
    void setModelView(std::vector<float> const& m);
    /// "a_texRange" of an input: maps the quad's texture coordinates to a part of the texture. Never set if its
    /// location is 0.
    void setTexRange(double offsetX, double offsetY, double scaleX, double scaleY, size_t input);

protected:
    /// For the constructors of filters with parameters: getParametersObject() makes a Record, unless the description
    /// has a factory of its own.
    template <class Record>
    void offerParameters() {
        if (!supportsParameters()) setParametersFactory([] { return std::make_shared<Record>(); });
    }

private:
    struct InputLocations {
        GLint sampler;
        GLint texRange;
        GLint texScale;
        GLint textureCoordinates;
    };

    using Extent = std::array<size_t, 2>;

    void prepareLocations();
    InputLocations lookUpInput(size_t input) const;
    InputLocations inputLocations(size_t input) const;
    void setOutputGeometry(std::array<size_t, 2> const& targetSize, size_t outputW, size_t outputH,
                           std::vector<size_t> const& offset);
    void bindInput(size_t input, FilterSource const& source, TextureRanges const& ranges, EnabledArrays& arrays,
                   Gles3RenderBackendInstance& instance);
    void setTexRange(TextureRange const& range, GLint location) const;
    static Extent physicalSize(size_t id, Gles3Target const& target, Gles3RenderBackendInstance& instance);
    static Extent referenceSize(Gles3Target const& target, Extent const& physical);

    GlName program_;
    std::map<std::string, GLint> attributes_;
    std::map<std::string, GLint> uniforms_;
    Gles3Buffer indexBuffer_;
    Gles3Buffer vertexBuffer_;

    // Copies of entries of the two maps: forming the names at every draw costs more than the draw.
    GLint geometry_ = -1;
    GLint modelView_ = -1;
    GLint outputSize_ = -1;
    GLint position_ = -1;
    std::vector<InputLocations> inputs_;
    size_t sampledInputs_ = 0; // for a table filter one more than inputs: its table
};
