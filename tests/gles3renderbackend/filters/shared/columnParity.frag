#version 100
precision mediump float;
#include "shared/columnParity.glsl"

void main() {
    gl_FragColor = vec4(columnParity());
}
