uniform highp vec4 a_texRange01;
attribute highp vec2 a_texturecoordinates01;

// Out: the vertex in the texture space of input 01.
highp vec2 inInput01() {
    return a_texRange01.zw * a_texturecoordinates01 + a_texRange01.xy;
}
