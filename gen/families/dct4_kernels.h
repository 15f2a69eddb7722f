#pragma once

#include "output.h"

namespace gen {

// Writes the straight-line kernels of the DCT-IV engine, both element types,
// into one header that the engine's loops include.
void writeDct4Kernels(Output& out);

}  // namespace gen
