#include "shared/vertex/onTarget.glsl"
uniform highp mat2 a_modelView;

// In: a vertex in clip space. Out: the vertex on the target; on the host's surface rows are mirrored, so that the first
// one is at the top.
highp vec4 mirrored(highp vec4 vertex) {
    return vec4(a_modelView * vertex.xy, vertex.zw);
}
