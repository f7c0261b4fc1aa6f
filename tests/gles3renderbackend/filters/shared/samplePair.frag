#version 100
precision mediump float;
#include "shared/samplePair.glsl"
uniform highp sampler2D s_texture00;
varying highp vec2 v_texCoordCurr;

// Values are -32768..32767: shifted by 32768 they fit two bytes.
void main() {
    highp vec2 shifted = samplePair(texture2D(s_texture00, v_texCoordCurr)) + 32768.0;
    highp vec2 high = floor(shifted / 256.0);
    highp vec2 low = shifted - 256.0 * high;
    gl_FragColor = vec4(low.x, high.x, low.y, high.y) / 255.0;
}
