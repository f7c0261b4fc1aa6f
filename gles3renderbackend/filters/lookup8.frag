#version 100
precision mediump float;
// Each channel reads its output from a table of a_maxValue + 1 entries; alpha passes through. The channel's value
// divides the table evenly, and entries are addressed at their centres, where nearest sampling cannot miss them.
uniform highp sampler2D s_texture00;
uniform highp sampler2D s_texture01;
uniform highp float a_maxValue;
varying highp vec2 v_texCoord00;

highp vec4 entry(highp float value) {
    highp float count = a_maxValue + 1.0;
    highp float index = min(floor(value * count), a_maxValue);
    return texture2D(s_texture01, vec2((index + 0.5) / count, 0.0));
}

void main() {
    highp vec4 pixel = texture2D(s_texture00, v_texCoord00);
    gl_FragColor = vec4(entry(pixel.r).r, entry(pixel.g).g, entry(pixel.b).b, pixel.a);
}
