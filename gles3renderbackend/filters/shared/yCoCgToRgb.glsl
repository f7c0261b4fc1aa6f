// The inverse of the reversible YCoCg-R transform (Malvar and Sullivan 2003), on whole numbers of a unit:
//   t = Y - floor(Cg / 2),  G = Cg + t,  B = t - floor(Co / 2),  R = B + Co
// In: (Y, Co, Cg), off from whole numbers by less than 0.1 units. Out: (R, G, B); errors add up to less than 0.3 units.
// floor(x / 2 + 1 / 4): the quarter lifts a result that the error pushed below n back to n, and is too small to lift n
// + 1 / 2 to n + 1.
highp vec3 yCoCgToRgb(highp vec3 yCoCg, highp float unit) {
    highp vec2 halved = unit * floor(0.5 / unit * yCoCg.yz + 0.25);
    highp float t = yCoCg.x - halved.y;
    highp float b = t - halved.x;
    return vec3(b + yCoCg.y, yCoCg.z + t, b);
}
