// Signs carried on values: a back-end writes -x as x with a flag, and the
// next addition or subtraction absorbs the flag, so that negations and
// rotations by i cost nothing.
#pragma once

#include <string>

namespace gen {

struct Signed {
    std::string name;
    bool negated = false;
};

inline Signed flip(Signed p, bool doIt) {
    if (doIt) p.negated = !p.negated;
    return p;
}

// x + y, or x - y when `subtract`, with both signs folded in.  `write(plus,
// a, b)` defines a + b or a - b and returns its name.
template <class Write>
Signed combine(Signed x, Signed y, bool subtract, Write&& write) {
    if (subtract) y.negated = !y.negated;
    if (x.negated && y.negated) return {write(true, x.name, y.name), true};
    if (x.negated) return {write(false, y.name, x.name), false};
    if (y.negated) return {write(false, x.name, y.name), false};
    return {write(true, x.name, y.name), false};
}

}  // namespace gen
