#include "shared/vertex/input00.glsl"
uniform highp vec2 a_texscale00;
varying highp vec2 v_texCoord00;
varying highp vec2 v_texCoord01;

// The input is twice as wide as the output: an output pixel's centre lies between its two texels.
void findTexelPair() {
    highp vec2 stepX = vec2(a_texscale00.x, 0.0);
    v_texCoord00 = inInput00() - 0.5 * stepX;
    v_texCoord01 = v_texCoord00 + stepX;
}
