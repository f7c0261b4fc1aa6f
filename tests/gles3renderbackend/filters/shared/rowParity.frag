#version 100
precision mediump float;
#include "shared/rowParity.glsl"

void main() {
    gl_FragColor = vec4(rowParity());
}
