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
// Form D, direct pairing of x[j] with x[p-j]: X[k] = E + O and X[p-k] =
// E - O for k = 1..(p-1)/2, with E the cosine sum with x[0] and O the sine
// sum times +-i, each product formed on its own (signs folded into the
// additions) and each sum narrowed at its end.
class DirectForm {
public:
    DirectForm(Arithmetic& g, const Nodes& x, const DftOptions& opt);
    int X0() const { return X0_; }
    std::pair<int, int> chains(int k);  // E and O

private:
    Arithmetic& g_;
    const Nodes& x_;
    int sign_, p_;
    Nodes a_, d_;  // pair sums and differences, index j = 1..(p-1)/2
    int X0_;
};
Nodes splitRadix(Arithmetic& g, const Nodes& x, const DftOptions& opt);

// Multipliers of a sub-batch: pre of the (signal, element) that each of its
// values came from.
Multipliers composePre(const Multipliers& pre, std::function<std::pair<int, int>(int, int)> origin);

// Joins of two factors, Cooley-Tukey or Good-Thomas.  The first stage runs
// the first factor and leaves the rows of the second: one row per
// first-stage bin of each signal, the bins of a real signal only up to the
// middle, since the others are conjugates.
struct JoinStage {
    Batch rows;
    std::vector<std::pair<int, int>> origin;  // (signal, first-stage bin) of each row
};
JoinStage firstStage(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt,
                     const Multipliers& pre);
// Where output k2 of the row of first-stage bin `bin` lands, and the twiddle
// of element c of that row (1 in a Good-Thomas join).
int joinedBin(const Plan& plan, int bin, int k2);
Complex joinTwiddle(const Plan& plan, const DftOptions& opt, int bin, int c);
Batch join(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre);
Batch inLane(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre);

// Prime forms.
Batch rader(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre);
Batch raderDeferred(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre);
Batch realRader(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre);
Batch bluestein(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre);
// The inner transforms of Rader and Bluestein: a forward and an unnormalised
// inverse DFT, whatever the direction of the body.
std::pair<DftOptions, DftOptions> convolutionOptions(const DftOptions& opt);

}  // namespace gen
