// The list of families, for the command's driver.
#pragma once

#include "accuracy.h"

namespace tvkaccuracy {

struct Family {
    const char* title;               // heading of the family's table
    std::vector<Codelet> (*codelets)();
};

const std::vector<Family>& families();

}  // namespace tvkaccuracy
