#include "shared/vertex/onTarget.glsl"
uniform highp mat2 a_modelView;

// In: a vertex in clip space. Out: on the host's surface with its rows mirrored, so that the first one is at the top;
// on other targets the same.
highp vec4 mirrored(highp vec4 vertex) {
    return vec4(a_modelView * vertex.xy, vertex.zw);
}
