#pragma once

#include "output.h"

namespace gen {

// Writes the Walsh-Hadamard Codelets of orders 1 to 13 in tvk32f and tvk64f,
// `shards` source files per type.
void writeWalshHadamard(Output& out, int shards);

}  // namespace gen
