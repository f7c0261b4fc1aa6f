// The first piece of every vertex stage: uniforms get their locations in the order of declaration, and a uniform at
// location 0 counts as missing. Location 0 goes to a_geometry.
uniform highp vec4 a_geometry;
attribute highp vec2 a_position;

// Out: the vertex of the output's rectangle, in clip space.
highp vec4 onTarget() {
    return vec4(a_geometry.zw * a_position + a_geometry.xy, 1.0, 1.0);
}
