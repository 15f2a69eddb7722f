// Complex DFT algorithms as graph builders.
//
// A plan is a tree written in the notation of the plan tables:
//   "2" "3" "4" "5"   the small forms          "5w"  the 5-point form with 0.25
//   "7d" "11d"        direct pairing (Form D)  "13r" Rader (Form R)
//   "SR", "SR8"       split radix              "B96" Bluestein over 96 points
//   "PxM"             Good-Thomas join         "P.M" Cooley-Tukey join
//   "(...)"           a sub-plan               "5wx[7r|7d]" a join whose first
//                                              second-stage transform differs
// The leftmost factor of a join touches the source.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "graph.h"

namespace gen {

struct Plan {
    enum class Kind { Small, FiveW, Direct, SplitRadix, CooleyTukey, GoodThomas, Rader, Bluestein };
    Kind kind = Kind::Small;
    int n = 0;
    std::shared_ptr<Plan> first, second;  // joins: the two factors; Rader, Bluestein: inner transforms
    std::shared_ptr<Plan> secondOfBinZero;  // join: stage-two transform of bin 0, when it differs
    int root = 0;                         // Rader: primitive root
    std::string text;                     // the notation it was parsed from
};

// Plans of whole lengths by element type, for the inner transforms of Rader
// and Bluestein that the notation leaves to the table.
using PlanLookup = std::function<std::shared_ptr<Plan>(int n)>;

std::shared_ptr<Plan> parsePlan(const std::string& text, const PlanLookup& table);

struct DftOptions {
    int sign = -1;                 // -1 forward, +1 inverse
    bool doubleProducts = false;   // single-precision 3 and 5: products in double
    bool bluesteinReadsPast = false;  // Form B fetches element p and multiplies it by 0
    bool deferredRotation = false;    // Rader as a real-coefficient network, i applied last
};

// Transforms every signal of the batch by `plan`; input j of signal t is
// first multiplied by pre(t, j) when `pre` is given.
Batch transform(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt,
                const Multipliers& pre = {});

// The whole body: outputs of the length-n transform of the source array.
void buildDft(Graph& g, const Plan& plan, const DftOptions& opt);

}  // namespace gen
