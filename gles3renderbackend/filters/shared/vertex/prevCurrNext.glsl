#include "shared/vertex/input00.glsl"
uniform highp vec2 a_texscale00;
varying highp vec2 v_texCoordPrev;
varying highp vec2 v_texCoordCurr;
varying highp vec2 v_texCoordNext;

// Computes the coordinates of a texel and of its neighbours along x.
void findPrevCurrNext() {
    highp vec2 stepX = vec2(a_texscale00.x, 0.0);
    v_texCoordCurr = inInput00();
    v_texCoordPrev = v_texCoordCurr - stepX;
    v_texCoordNext = v_texCoordCurr + stepX;
}
