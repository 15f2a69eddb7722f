#pragma once

#include <ostream>

#include "output.h"

namespace gen {

// Writes the complex DFT Codelets into `shards` files per direction and type,
// and one line of operation counts per Codelet into `counts`.
void writeComplexDft(Output& out, int shards, std::ostream& counts);

}  // namespace gen
