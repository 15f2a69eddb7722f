// The forms that transform() dispatches to, and the helpers they share.
// Internal to the algorithm layer.
#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "algorithms/transform.h"

namespace gen {

using Nodes = std::vector<int>;

inline Complex realConst(const Fixed& v) { return Complex::real(v); }
inline Complex imagConst(const Fixed& v) { return {Real::ofInt(0), Real::of(v)}; }
// Multiplication by sign*i: a renaming of the two parts, with a sign.
inline Complex rotation(int sign) { return {Real::ofInt(0), Real::ofInt(sign)}; }

// Small forms and straight-line kernels, on the values of one signal.
Nodes dft2(Arithmetic& g, const Nodes& x);
Nodes dft3(Arithmetic& g, const Nodes& x, const DftOptions& opt);
Nodes dft4(Arithmetic& g, const Nodes& x, const DftOptions& opt);
Nodes dft5(Arithmetic& g, const Nodes& x, const DftOptions& opt, bool w);
Nodes direct(Arithmetic& g, const Nodes& x, const DftOptions& opt);
Nodes splitRadix(Arithmetic& g, const Nodes& x, const DftOptions& opt);

// Multipliers of a sub-batch: pre of the (signal, element) that each of its
// values came from.
Multipliers composePre(const Multipliers& pre, std::function<std::pair<int, int>(int, int)> origin);

// Joins of two factors.
Batch cooleyTukey(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre);
Batch goodThomas(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre);
Batch inLane(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre);

// Prime forms.
Batch rader(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre);
Batch raderDeferred(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre);
Batch bluestein(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre);
// The inner transforms of Rader and Bluestein: a forward and an unnormalised
// inverse DFT, whatever the direction of the body.
std::pair<DftOptions, DftOptions> convolutionOptions(const DftOptions& opt);

}  // namespace gen
