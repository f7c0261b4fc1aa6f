uniform highp vec4 a_texRange00;
attribute highp vec2 a_texturecoordinates00;

// Out: the vertex in the texture space of input 00.
highp vec2 inInput00() {
    return a_texRange00.zw * a_texturecoordinates00 + a_texRange00.xy;
}
