#version 100
precision mediump float;
#include "shared/overunderflow.glsl"
uniform highp vec4 a_pairs;

// High parts may be negative: shifted by 128 they fit a byte.
void main() {
    gl_FragColor = (overunderflow(a_pairs) + vec4(0.0, 128.0, 0.0, 128.0)) / 255.0;
}
