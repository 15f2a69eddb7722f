// Back-ends: C++ text of a body from its graph, one back-end per vector shape.
#pragma once

#include <string>

#include "ir/graph.h"

namespace gen {

// A real-domain graph, one real value per variable.  `single` bodies hold
// tvk32f values and double ones where a node is double; the others tvk64f.
std::string emitScalar(const Graph& g, bool single);

// A real-domain graph whose every value is a vector V of independent
// transforms, one per lane, in `single` (float lanes) or double: inputs
// read by in(Index<k>{}), outputs written by out(Index<k>{}, value).
std::string emitLanes(const Graph& g, bool single);

// tvk64fc: one complex value per __m128d, real part in the low half.
std::string emitInterleaved(const Graph& g);

// tvk32fc: split form, four real parts in one __m128 and the four imaginary
// parts in another, one transform per lane; with the number of shuffles the
// text holds.
struct SplitCode {
    std::string text;
    int shuffles = 0;
};
SplitCode emitSplit(const Graph& g);

}  // namespace gen
