// The straight-line pieces of the DCT-IV engine, on pairs of real values:
// every value stands for a vector of independent transforms, one per lane.
//
//   R(L)   Z(k) = sum over t = -L/2 .. L/2-1 of u[t] exp(i pi (2k+1) t / L),
//          k < L/2: radix 2 up to 8 points, radix 4 above
//   Y(L)   output v = Re sum over r < L/2 of W[r] exp(i pi v (2r+1) / L),
//          v = -L/2 .. L/2-1: the transpose of R(L), radix 2, or radix 4 from
//          16 points up where `wide`
//   D      the radix steps: D[w] = sum over b of z[b] exp(2 pi i w b / R),
//          the upper half conjugated, with z[b] first rotated by twiddles
//          that are values, not constants
#pragma once

#include <functional>
#include <vector>

#include "ir/graph.h"
#include "ir/pair_arithmetic.h"

namespace gen {

// Z(0 .. L/2-1) from the points u[t + L/2].
std::vector<int> dct4RealTransform(PairArithmetic& c, int L, const std::vector<int>& points);

// The outputs v + L/2 of Y(L) from W[0 .. L/2-1].  `betweenStages` runs once,
// after the first stage and before the sub-transforms of the outermost level.
std::vector<int> dct4RealOutput(PairArithmetic& c, int L, bool wide, const std::vector<int>& W,
                                const std::function<void()>& betweenStages = {});

// z rotated by the angle whose cosine and sine are the values `cosine`, `sine`.
int dct4Rotate(PairArithmetic& c, Graph& g, int z, int cosine, int sine);

// D[0 .. R-1] of z[0 .. R-1] (R = 2, 4, 8), D[R/2 ..] conjugated when `conjUpper`.
std::vector<int> dct4Dft(PairArithmetic& c, int R, bool conjUpper, const std::vector<int>& z);

}  // namespace gen
