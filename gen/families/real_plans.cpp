// The plans of the real DFT, per length.
//
// Forward: decimation in time throughout.  "P.M" is a Cooley-Tukey join whose
// M residue classes mod M each take a P-point transform first, so the radix-4
// lengths are "m.4" (8 = 2.4, 16 = 4.4, 32 = (2.4).4, 64 = (4.4).4); "AxB" is a
// Good-Thomas join whose A-point blocks come first.
//
// Inverse: the transpose of the network of its column, with the doublings of
// the bins in front: passes run from the bins to the samples in the opposite
// order.  Most lengths transpose their forward plan; where the inverse keeps
// the forward's order of passes (14, 15, 18, 20, 28, 39, 45, 48, 50, 52, 62),
// or has an order of its own (30, 60), the column holds the reversed plan.
#include "families/real_plans.h"

#include <map>
#include <stdexcept>

namespace gen {

namespace {

struct Row {
    const char* forward;
    const char* inverse;
};

const std::map<int, Row>& table() {
    static const std::map<int, Row> rows = {
        {2, {"2", "2"}},
        {3, {"3d", "3d"}},
        {4, {"2.2", "2.2"}},
        {5, {"5d", "5d"}},
        {6, {"3dx2", "3dx2"}},
        {7, {"7d", "7d"}},
        {8, {"2.4", "2.4"}},
        {9, {"3d.3d", "3d.3d"}},
        {10, {"5dx2", "5dx2"}},
        {11, {"11d", "11r"}},
        {12, {"4x3d", "4x3d"}},
        {13, {"13r", "13r"}},
        {14, {"2x7d", "7dx2"}},
        {15, {"3dx5d", "5dx3d"}},
        {16, {"4.4", "4.4"}},
        {17, {"17r", "17r"}},
        {18, {"2x(3d.3d)", "(3d.3d)x2"}},
        {19, {"19r", "19r"}},
        {20, {"5dx4", "4x5d"}},
        {21, {"7dx3d", "7dx3d"}},
        {22, {"2x11d", "2x11r"}},
        {23, {"23r", "23r"}},
        {24, {"3dx(2.4)", "3dx(2.4)"}},
        {25, {"5d.5d", "5d.5d"}},
        {26, {"13rx2", "13rx2"}},
        {27, {"(3d.3d).3d", "(3d.3d).3d"}},
        {28, {"4x7d", "7dx4"}},
        {29, {"29r", "29r"}},
        {30, {"(5dx3d)x2", "2x(5dx3d)"}},
        {31, {"31r", "31r"}},
        {32, {"(2.4).4", "(2.4).4"}},
        {33, {"11dx3d", "11rx3d"}},
        {34, {"2x17r", "2x17r"}},
        {35, {"7dx5d", "7dx5d"}},
        {36, {"(3d.3d)x4", "(3d.3d)x4"}},
        {37, {"37r", "37r"}},
        {38, {"19rx2", "19rx2"}},
        {39, {"13rx3d", "3dx13r"}},
        {40, {"(2.4)x5d", "(2.4)x5d"}},
        {41, {"41r", "41r"}},
        {42, {"(7dx3d)x2", "(7dx3d)x2"}},
        {43, {"43r", "43r"}},
        {44, {"11dx4", "11rx4"}},
        {45, {"5dx(3d.3d)", "(3d.3d)x5d"}},
        {46, {"2x23r", "2x23r"}},
        {47, {"47r", "47r"}},
        {48, {"(4.4)x3d", "3dx(4.4)"}},
        {49, {"7d.7d", "7d.7d"}},
        {50, {"(5d.5d)x2", "2x(5d.5d)"}},
        {51, {"17rx3d", "17rx3d"}},
        {52, {"13rx4", "4x13r"}},
        {53, {"53r", "53r"}},
        {54, {"2x((3d.3d).3d)", "2x((3d.3d).3d)"}},
        {55, {"11dx5d", "11rx5d"}},
        {56, {"7dx(2.4)", "7dx(2.4)"}},
        {57, {"19rx3d", "19rx3d"}},
        {58, {"2x29r", "2x29r"}},
        {59, {"59r", "59r"}},
        {60, {"(3dx5d)x4", "5dx(3dx4)"}},
        {61, {"61r", "61r"}},
        {62, {"31rx2", "2x31r"}},
        {63, {"7dx(3d.3d)", "7dx(3d.3d)"}},
        {64, {"(4.4).4", "(4.4).4"}},
    };
    return rows;
}

const Row& rowOf(int n) {
    const auto it = table().find(n);
    if (it == table().end()) throw std::out_of_range("no real plan for length " + std::to_string(n));
    return it->second;
}

// The q-point plans of the Rader forms.  A forward Rader block transforms
// its permuted samples by the first column, passes in the order given; an
// inverse one ends in a q-point inverse, so its network holds that plan
// reversed (second column), as the inverse lengths do.  The real DFT has no
// forward 11-point Rader block; the Hartley transform has.
struct RaderRow {
    const char* samples;
    const char* network;
};

const std::map<int, RaderRow>& raderTable() {
    static const std::map<int, RaderRow> rows = {
        {11, {"5dx2", "5dx2"}},
        {13, {"3dx4", "4x3d"}},
        {17, {"4.4", "4.4"}},
        {19, {"(3d.3d)x2", "(3d.3d)x2"}},
        {23, {"2x11d", "2x11r"}},
        {29, {"7dx4", "4x7d"}},
        {31, {"(3dx2)x5d", "5dx(3dx2)"}},
        {37, {"4x(3d.3d)", "4x(3d.3d)"}},
        {41, {"5dx(2.4)", "(2.4)x5d"}},
        {43, {"(2x7d)x3d", "7dx(2x3d)"}},
        {47, {"23rx2", "2x23r"}},
        {53, {"4x13r", "4x13r"}},
        {59, {"29rx2", "29rx2"}},
        {61, {"(3dx5d)x4", "5dx(3dx4)"}},
    };
    return rows;
}

// Whether a plan is part of a forward transform, or of a network that an
// inverse transposes.  A Rader block's inverse blocks are transposed
// networks: the roles alternate from one level to the next.
enum class Role { Forward, Network };

std::shared_ptr<Plan> parse(const std::string& text, Role role);

// Fills in the plans of every Rader block of a tree: its q-point transform
// in the same role, and its inverse blocks (length h, and length q for the
// odd frequencies of an even h) as networks of the other role.
void resolveRader(Plan& plan, Role role) {
    if (plan.kind != Plan::Kind::Rader) {
        if (plan.first) resolveRader(*plan.first, role);
        if (plan.second) resolveRader(*plan.second, role);
        return;
    }
    const int p = plan.n, q = p - 1, h = q / 2;
    const RaderRow& row = raderTable().at(p);
    plan.first = parse(role == Role::Forward ? row.samples : row.network, role);
    const Role blocks = role == Role::Forward ? Role::Network : Role::Forward;
    auto blockPlan = [&](int n) { return parse(blocks == Role::Network ? rowOf(n).inverse : rowOf(n).forward, blocks); };
    plan.second = blockPlan(h);
    if (h % 2 == 0) plan.oddBins = blockPlan(q);
}

std::shared_ptr<Plan> parse(const std::string& text, Role role) {
    auto plan = parsePlan(text, [](int) -> std::shared_ptr<Plan> { return nullptr; });
    resolveRader(*plan, role);
    return plan;
}

}  // namespace

std::string realForwardPlanText(int n) { return rowOf(n).forward; }
std::string realInversePlanText(int n) { return rowOf(n).inverse; }
std::shared_ptr<Plan> realForwardPlan(int n) { return parse(realForwardPlanText(n), Role::Forward); }
std::shared_ptr<Plan> realInversePlan(int n) { return parse(realInversePlanText(n), Role::Network); }
std::shared_ptr<Plan> realPlan(const std::string& text) { return parse(text, Role::Forward); }

}  // namespace gen
