#pragma once

#include <ostream>

#include "output.h"

namespace gen {

// Writes the Hartley Codelets of lengths 2 to 64 in tvk32f and tvk64f,
// `shards` files per type, and one line of operation counts per Codelet.
void writeHartley(Output& out, int shards, std::ostream& counts);

}  // namespace gen
