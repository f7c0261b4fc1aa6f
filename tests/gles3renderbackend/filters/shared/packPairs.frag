#version 100
precision mediump float;
#include "shared/packPairs.glsl"
uniform highp vec4 a_pairs;

void main() {
    gl_FragColor = packPairs(a_pairs);
}
