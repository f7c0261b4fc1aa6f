#version 100
#include "shared/vertex/mirrored.glsl"
uniform highp vec4 a_texRange00;
varying highp vec2 v_texCoord00;

void main() {
    highp vec4 vertex = onTarget();
    // Clip space to texture space, before the mirroring: the source lies upright under the target.
    highp vec2 underneath = 0.5 * (vertex.xy + 1.0);
    v_texCoord00 = a_texRange00.zw * underneath + a_texRange00.xy;
    gl_Position = mirrored(vertex);
}
