// The exported surface: one table of all 1193 names, from which the stubs,
// their address rows and the linker's version script are written.
#pragma once

#include <set>
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

// Writes the stubs and rows of the families that are built, the version
// script that exports exactly them, and the lists of all and of built names.
void writeExports(Output& out, const std::set<Family>& built);

}  // namespace gen
