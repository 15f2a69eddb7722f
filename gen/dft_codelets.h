#pragma once

#include <ostream>

#include "exact.h"
#include "output.h"

namespace gen {

// 1/sqrt(n) to the precision of Fixed.
Fixed rsqrtExact(int n);

// Writes the complex DFT Codelets into `shards` files per direction and type,
// and one line of operation counts per Codelet into `counts`.
void writeComplexDft(Output& out, int shards, std::ostream& counts);

}  // namespace gen
