#pragma once

#include <ostream>
#include <set>
#include <string>

#include "output.h"

namespace gen {

// Writes the real DFT Codelets, forward and inverse, in the CCS, Pack and
// Perm layouts and both element types, `shards` files per set, and one line
// of operation counts per Codelet into `counts`; and the length switches.
// Returns the exported names it wrote.
std::set<std::string> writeRealDft(Output& out, int shards, std::ostream& counts);

}  // namespace gen
