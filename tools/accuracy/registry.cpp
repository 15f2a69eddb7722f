// The families the accuracy command measures, in the order of the table.
// Adding a family: its file family_<name>.cpp defining <name>(), and one
// line here.
#include "registry.h"

#define TVKACCURACY_FAMILIES(X)         \
    X(complexDft, "Complex DFT")        \
    X(realDft, "Real DFT")              \
    X(hartley, "Hartley")               \
    X(walshHadamard, "Walsh-Hadamard, N = 2^order") \
    X(dct4, "DCT-IV (through a context)")

namespace tvkaccuracy {

#define TVKACCURACY_DECLARE(function, title) std::vector<Codelet> function();
TVKACCURACY_FAMILIES(TVKACCURACY_DECLARE)

const std::vector<Family>& families() {
#define TVKACCURACY_ROW(function, title) Family{title, function},
    static const std::vector<Family> all = {TVKACCURACY_FAMILIES(TVKACCURACY_ROW)};
    return all;
}

}  // namespace tvkaccuracy
