// The factorisation of every complex DFT length, per element type.
//
// tvk64fc favours Good-Thomas joins without twiddles and split radix for
// powers of two; tvk32fc keeps a factor of 4 first for its four lanes and
// accepts twiddles for it.  Both columns are frozen: each is the design of
// its body, so they differ on purpose.
#include "families/complex_plans.h"

#include <map>
#include <stdexcept>

namespace gen {

namespace {

struct Row {
    const char* single;  // tvk32fc
    const char* dbl;     // tvk64fc
};

const std::map<int, Row>& table() {
    static const std::map<int, Row> rows = {
        {2, {"2", "2"}},
        {3, {"3", "3"}},
        {4, {"4", "4"}},
        {5, {"5", "5"}},
        {6, {"2x3", "2x3"}},
        {7, {"7r", "7d"}},
        {8, {"4.2", "SR8"}},
        {9, {"3.3", "3.3"}},
        {10, {"5x2", "5wx2"}},
        {11, {"11r", "11d"}},
        {12, {"4x3", "3x4"}},
        {13, {"13r", "13r"}},
        {14, {"2x7d", "2x7d"}},
        {15, {"5x3", "5x3"}},
        {16, {"4.4", "SR16"}},
        {17, {"17r", "17r"}},
        {18, {"(3x2).3", "(3.3)x2"}},
        {19, {"19r", "19r"}},
        {20, {"4x5", "5x4"}},
        {21, {"7dx3", "7dx3"}},
        {22, {"2x11d", "11dx2"}},
        {23, {"23r", "23r[11dx2|11rx2]"}},
        {24, {"4.(3x2)", "SR8x3"}},
        {25, {"5.5", "5.5"}},
        {26, {"13rx2", "13rx2"}},
        {27, {"(3.3).3", "(3.3).3"}},
        {28, {"4x7d", "4x7d"}},
        {29, {"29r", "29r"}},
        {30, {"(5x2)x3", "(2x5)x3"}},
        {31, {"31r", "31r"}},
        {32, {"4.(4.2)", "SR32"}},
        {33, {"11dx3", "11dx3"}},
        {34, {"2x17r", "2x17r"}},
        {35, {"5x7d", "5wx[7r|7d]"}},
        {36, {"(4x3).3", "4x(3.3)"}},
        {37, {"37r", "37r"}},
        {38, {"2x19r", "2x19r"}},
        {39, {"13rx3", "13rx3"}},
        {40, {"(5x2).4", "SR8x5"}},
        {41, {"41r", "41r"}},
        {42, {"(7dx2)x3", "(2x7d)x3"}},
        {43, {"43r", "43r"}},
        {44, {"4x11d", "4x11d"}},
        {45, {"(5x3).3", "5x(3.3)"}},
        {46, {"23r.2", "23rx2"}},
        {47, {"47b96", "47r"}},
        {48, {"4.(3x4)", "SR16x3"}},
        {49, {"7d.7d", "7d.7d"}},
        {50, {"(5x2).5", "(5w.5w)x2"}},
        {51, {"17rx3", "17rx3"}},
        {52, {"4x13r", "13rx4"}},
        {53, {"53r", "53r[13rx4|13dx4]"}},
        {54, {"2x((3.3).3)", "2x((3.3).3)"}},
        {55, {"5x11d", "11dx5"}},
        {56, {"(7dx2).4", "7dxSR8"}},
        {57, {"19rx3", "19rx3"}},
        {58, {"2x29r", "29rx2"}},
        {59, {"59b128", "59r"}},
        {60, {"4.(5x3)", "(3x5w)x4"}},
        {61, {"61r", "61r"}},
        {62, {"31r.2", "31rx2"}},
        {63, {"(3.3)x7d", "7dx(3.3)"}},
        {64, {"(4.2).(4.2)", "SR64"}},
        // Inner lengths of Form B: a 3-point stage on stride 32 or a 4-point
        // stage on stride 32, then radix-4 and radix-2 stages.
        {96, {"3.(4.(4.2))", nullptr}},
        {128, {"4.(4.(4.2))", nullptr}},
    };
    return rows;
}

}  // namespace

std::string planText(int n, ComplexType type) {
    const auto it = table().find(n);
    const char* text = it == table().end() ? nullptr : (type == ComplexType::C32 ? it->second.single : it->second.dbl);
    if (!text) throw std::out_of_range("no plan for length " + std::to_string(n));
    return text;
}

std::shared_ptr<Plan> planFor(int n, ComplexType type) {
    return parsePlan(planText(n, type), [type](int m) { return planFor(m, type); });
}

}  // namespace gen
