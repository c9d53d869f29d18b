#!/usr/bin/env python3
"""Reference values of scalar spline curves, computed from the curve's definition:
cubic Bezier segments in polynomial form, seven bisection rounds on the parameter and
a straight chord between the last two bracket points. Writes spline_reference.csv:
curve,x,value for every curve below at x from -2 to 27 in steps of 0.37."""

def poly(p0, h0, h1, p1):
    c = 3.0 * (h0 - p0)
    b = 3.0 * (h1 - h0) - c
    a = p1 - p0 - c - b
    return lambda t: ((a * t + b) * t + c) * t + p0

def segment_value(k0, k1, x):
    # k = (x, y, (out_x, out_y), (in_x, in_y))
    if x == k0[0]:
        return k0[1]
    if x == k1[0]:
        return k1[1]
    X = poly(k0[0], k0[2][0], k1[3][0], k1[0])
    Y = poly(k0[1], k0[2][1], k1[3][1], k1[1])
    lo, hi, xlo, xhi = 0.0, 1.0, k0[0], k1[0]
    for _ in range(7):
        mid = (hi - lo) * 0.5 + lo
        xm = X(mid)
        if x < xm:
            hi, xhi = mid, xm
        else:
            lo, xlo = mid, xm
    ylo = Y(lo)
    if xhi == xlo:
        return ylo
    return ylo + (x - xlo) * (Y(hi) - ylo) / (xhi - xlo)

def evaluate(keys, x):
    if keys[-1][0] < x:
        return keys[-1][1]
    if keys[0][0] > x:
        return keys[0][1]
    lo, hi = 0, len(keys) - 1
    while lo < hi - 1:
        mid = lo + (hi - lo) // 2
        if keys[mid][0] < x:
            lo = mid
        else:
            hi = mid
    return segment_value(keys[lo], keys[hi], x)

def preset(x0, y0, x1, y1, n):
    table = {
        0: ((x0 + (x1 - x0) / 3.0, y0 + (y1 - y0) / 3.0), (x1 - (x1 - x0) / 3.0, y1 - (y1 - y0) / 3.0)),
        1: ((x0 + (x1 - x0) * 0.25, y0), (x1 - (x1 - x0) * 0.25, y1)),
        2: ((x0 + (x1 - x0) * 0.5, y0), (x1 - (x1 - x0) * 0.5, y1)),
        3: ((x0, y1), (x0 * 0.9 + x1 * 0.1, y1)),
        4: ((x1 * 0.9 + x0 * 0.1, y0), (x1, y0)),
        5: ((x0, y0 + (y1 - y0) * 0.25), (x1, y1 - (y1 - y0) * 0.25)),
        6: ((x0, y0 + (y1 - y0) * 0.5), (x1, y1 - (y1 - y0) * 0.5)),
    }
    out, inn = table[n]
    return [(x0, y0, out, (-1.0, -1.0)), (x1, y1, (-1.0, -1.0), inn)]

curves = {}
# The constructor: handles at a third of the span, truncated to whole frames (25 // 3 = 8).
curves["new"] = [(0.0, 0.0, (8.0, 0.0), (-1.0, -1.0)), (25.0, 100.0, (-1.0, -1.0), (17.0, 100.0))]
for n in range(7):
    curves["preset%d" % n] = preset(2.0, -5.0, 20.0, 40.0, n)
# Three keys with handles set by hand, one of them upright above its key.
curves["three"] = [
    (1.0, 10.0, (1.0, 30.0), (-1.0, -1.0)),
    (9.0, 5.0, (14.0, 0.0), (6.0, 8.0)),
    (24.0, 60.0, (-1.0, -1.0), (20.0, 70.0)),
]

with open("spline_reference.csv", "w") as out:
    for name, keys in curves.items():
        for i in range(0, 80):
            x = -2.0 + 0.37 * i
            out.write("%s,%r,%r\n" % (name, x, evaluate(keys, x)))
