// .x and .y hold the first column and row of the output in the destination's texel grid.
// highp: mediump loses the parity beyond column 1024.
uniform highp vec4 a_outputSize;
