// The last passes of the discrete Hartley transform, y[k] = sum x[n]
// cas(2 pi n k / N), on real values and pairs of them.  With X the DFT of
// negative exponent, y[k] = Re X[k] - Im X[k]: most bodies are a real DFT
// plan with one of these passes at the end.
#pragma once

#include <utility>
#include <vector>

#include "algorithms/transform.h"
#include "ir/pair_arithmetic.h"

namespace gen {

// `pairs`: y from the bins 0 to n/2 of a real DFT, y[k] and y[n-k] the sum
// and difference of Re X[k] and -Im X[k].
std::vector<int> hartleyPairs(Arithmetic& real, int n, const std::vector<std::pair<int, int>>& bins);

// `p-point`: the Hartley outputs of a complex signal formed inside the last
// pass of its plan.  For every k, h = Re X[k] - Im X[k] and g = Re X[k] +
// Im X[k]; the last blocks (of p points) give them for partner outputs as
// the sum and difference of the same two values, so the pairs pass is never
// run.  On a real signal, h is the Hartley transform.  A complex signal goes
// through a join as its real and imaginary parts, two real signals.
struct HartleyPair {
    int h, g;
};
std::vector<HartleyPair> hartleyLastPass(PairArithmetic& c, const Plan& plan, const Signal& x, const DftOptions& opt);

// `halves`: y from the Hartley transforms of two halves of the samples.  For
// an odd n/2, E of x[2m] and O of x[(n/2 + 2m) mod n], coprime, no rotation;
// for an even n/2, E of x[2m] and O of x[2m + 1], O rotated by the angles
// 2 pi k / n.
std::vector<int> hartleyHalves(Arithmetic& real, int n, const std::vector<int>& E, const std::vector<int>& O);

// The Rader form whose inner inverse ends the transform: the samples in the
// order of the powers of the root, their q-point DFT (plan.first), the cas
// kernel, and one q-point inverse (the transpose of plan.second) that gives
// y directly.
std::vector<int> hartleyRader(PairArithmetic& c, const Plan& plan, const std::vector<int>& x, const DftOptions& opt);

}  // namespace gen
