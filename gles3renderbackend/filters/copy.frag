#version 100
precision mediump float;
// highp: an unqualified sampler is lowp and may deliver 16-bit floats, which cannot tell all bytes / 255 apart.
uniform highp sampler2D s_texture00;
varying highp vec2 v_texCoord00;

void main() {
    gl_FragColor = texture2D(s_texture00, v_texCoord00);
}
