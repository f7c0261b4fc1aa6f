// A host's own filter class, registered under a name of its own and run.
#include "HostContext.h"

#include "gles3renderbackend/Gles3RenderBackend.h"
#include "gles3renderbackend/resources/Gles3Shader.h"
#include "renderbackend/RenderBackendInstance.h"

#include <memory>
#include <vector>

namespace {

// Swaps red and blue.
class SwapRedAndBlue : public Gles3Shader {
public:
    explicit SwapRedAndBlue(Filter& filter)
        : Gles3Shader("#version 100\n"
                      "uniform highp vec4 a_geometry;\n"
                      "attribute highp vec2 a_position;\n"
                      "attribute highp vec2 a_texturecoordinates00;\n"
                      "varying highp vec2 v_texCoord00;\n"
                      "void main() {\n"
                      "    v_texCoord00 = a_texturecoordinates00;\n"
                      "    gl_Position = vec4(a_geometry.zw * a_position + a_geometry.xy, 1.0, 1.0);\n"
                      "}\n",
                      "#version 100\n"
                      "uniform highp sampler2D s_texture00;\n"
                      "varying highp vec2 v_texCoord00;\n"
                      "void main() {\n"
                      "    gl_FragColor = texture2D(s_texture00, v_texCoord00).bgra;\n"
                      "}\n",
                      filter) {}
};

} // namespace

int main() {
    HostGl const gl;
    if (!gl.current()) return withoutContext();

    Gles3RenderBackend::FilterRegistry registry;
    registry.registerFactory(
        "SwapRedAndBlue", std::make_shared<Gles3RenderBackend::FilterRegistry::SpecializedFactory<SwapRedAndBlue>>());
    HostSurface const surface;
    Gles3RenderBackend backend(registry, RenderBackend::RGBA32, 1000000);
    auto const instance = backend.createInstance(surface);
    size_t const source = instance->createTarget({2, 2}, 32, false, RenderBackend::NEAREST, RenderBackend::RGBA32);
    size_t const target = instance->createTarget({2, 2}, 32, false, RenderBackend::NEAREST, RenderBackend::RGBA32);
    instance->clear(source, {255, 51, 0, 255});
    Filter filter("SwapRedAndBlue", 0, 0, 0, 0, 0, 1, 0, 1, 1, 1, 1, 1, 1, RenderBackend::NEAREST);
    instance->createFilterInstance(filter);
    instance->executeFilter(filter, {{source, 0, 0, true}}, 2, 2, target, 0, 0, 0, 0, SingleFilterParameters(), {0, 0});

    std::vector<unsigned char> expected;
    for (int texel = 0; texel < 4; ++texel)
        expected.insert(expected.end(), {0, 51, 255, 255});
    Checks checks;
    checks.expect(instance->getPixels(target, {0, 2, 0, 2}) == expected, "the host's own filter has run");
    return checks.exitCode();
}
