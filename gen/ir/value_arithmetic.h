// Arithmetic on values that are not spread over lanes: each reference stands
// for one value of its own.  The signal-level operations follow from the
// elementary ones, so a decorator or a domain of values defines only those.
#pragma once

#include "ir/arithmetic.h"

namespace gen {

class ValueArithmetic : public Arithmetic {
public:
    int width() const override { return 1; }
    bool inLane() const override { return true; }
    void setInLane(bool) override {}

    int valueOf(const Ref& r) override;
    Signal scale(const Signal& s, const std::function<Complex(int)>& constant) override;
    Signal add(const Signal& x, const Signal& y) override;
    // Input j of signal t is multiplied by pre(t, j) and narrowed: a rotation
    // is a block of its own.
    Batch lanewise(const Batch& in, const Kernel& kernel, const Multipliers& pre = {}) override;
    using Arithmetic::add;
};

}  // namespace gen
