#include "families/entry.h"

#include <cmath>
#include <sstream>

#include "ir/exact.h"

namespace gen {

std::string scalesOf(int n, bool single) {
    std::ostringstream s;
    if (single) {
        s << "constexpr tvk::Scales<float> kScales{1.0f, " << literal(inverseSqrt(n).toFloat()) << ", "
          << literal(Fixed::ratio(1, n).toFloat()) << "};\n";
    } else {
        s << "constexpr tvk::Scales<double> kScales{1.0, " << literal(1.0 / std::sqrt(static_cast<double>(n)))
          << ", " << literal(Fixed::ratio(1, n).toDouble()) << "};\n";
    }
    return s.str();
}

std::string entryPoints(const Entry& e) {
    const std::string body = "extern \"C\" TVK_INTERNAL tvkStatus u8_" + e.name + e.params + " {\n" + e.prelude;
    const std::string twin = "u8_owng" + e.name.substr(4) + "_unaligned";
    std::ostringstream s;
    switch (e.shape) {
        case Shape::SinglePath: s << body << "    return " << e.run("") << ";\n}\n"; break;
        case Shape::TwoPath:
            s << body << "    if (tvk::aligned16(src, dst)) return " << e.run(e.aligned) << ";\n"
              << "    return " << e.run(e.unaligned) << ";\n}\n";
            break;
        case Shape::Twinned:
            s << "extern \"C\" TVK_INTERNAL tvkStatus " << twin << e.params << " {\n"
              << e.prelude << "    return " << e.run(e.unaligned) << ";\n}\n";
            s << body << "    if (!tvk::aligned16(src, dst)) return " << twin << "(" << e.arguments << ");\n"
              << "    return " << e.run(e.aligned) << ";\n}\n";
            break;
    }
    return s.str();
}

}  // namespace gen
