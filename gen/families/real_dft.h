#pragma once

#include <ostream>

#include "output.h"

namespace gen {

// Writes the real DFT Codelets, forward and inverse, in the CCS, Pack and
// Perm layouts and both element types, `shards` files per set, and one line
// of operation counts per Codelet into `counts`.
void writeRealDft(Output& out, int shards, std::ostream& counts);

}  // namespace gen
