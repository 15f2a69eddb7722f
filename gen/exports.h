// The exported surface: one table of all 1193 names, from which the stubs,
// their address rows and the linker's version script are written.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "output.h"

namespace gen {

enum class Family { ComplexDft, RealDft, Hartley, WalshHadamard, Dct4, Version };

struct Export {
    std::string name;
    Family family;
};

std::vector<Export> exportTable();

// Writes the stubs and rows of the names that are built, the version script
// that exports exactly them, and the lists of all and of built names.
void writeExports(Output& out, const std::function<bool(const Export&)>& built);

}  // namespace gen
