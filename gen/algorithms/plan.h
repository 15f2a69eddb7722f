// Plans: the factorisation of one transform length, parsed from the notation
// of the plan tables.
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

namespace gen {

struct Plan {
    enum class Kind { Small, FiveW, Direct, SplitRadix, CooleyTukey, GoodThomas, Rader, Bluestein };
    Kind kind = Kind::Small;
    int n = 0;
    std::shared_ptr<Plan> first, second;  // joins: the two factors; Rader, Bluestein: inner transforms
    std::shared_ptr<Plan> secondOfBinZero;  // join: stage-two transform of bin 0, when it differs
    // Real Rader form with q/2 even: the length-q network of its odd-frequency block.
    std::shared_ptr<Plan> oddBins;
    int root = 0;                         // Rader: primitive root
    std::string text;                     // the notation it was parsed from
};

// Plans of whole lengths by element type, for the inner transforms of Rader
// and Bluestein that the notation leaves to the table.
using PlanLookup = std::function<std::shared_ptr<Plan>(int n)>;

std::shared_ptr<Plan> parsePlan(const std::string& text, const PlanLookup& table);

// The smallest primitive root of a prime, and base^exp mod m.
int primitiveRoot(int p);
int powMod(int base, int exp, int mod);

}  // namespace gen
