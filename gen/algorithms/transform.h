// Transform builders: a plan turned into values of an Arithmetic.
#pragma once

#include "algorithms/plan.h"
#include "ir/graph.h"

namespace gen {

struct DftOptions {
    int sign = -1;                 // -1 forward, +1 inverse
    bool bluesteinReadsPast = false;  // Form B fetches element p and multiplies it by 0
    bool deferredRotation = false;    // Rader as a real-coefficient network, i applied last
    bool realRader = false;           // Rader on pairs of real values, the real family's form
    bool conjugatePairs = false;      // split radix rotating by w^n and w^-n (see split_radix.cpp)
};

// Transforms every signal of the batch by `plan`; input j of signal t is
// first multiplied by pre(t, j) when `pre` is given.
Batch transform(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt,
                const Multipliers& pre = {});

// The whole body: outputs of the length-n transform of the source array.
void buildDft(Graph& g, const Plan& plan, const DftOptions& opt);

}  // namespace gen
