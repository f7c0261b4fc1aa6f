uniform highp vec4 a_texRange02;
attribute highp vec2 a_texturecoordinates02;

// Out: the vertex in the texture space of input 02.
highp vec2 inInput02() {
    return a_texRange02.zw * a_texturecoordinates02 + a_texRange02.xy;
}
