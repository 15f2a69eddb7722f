// The expression graph of one Codelet body.
//
// In the complex domain a node is a vector of `width` complex values (width 1
// for the interleaved back-end, 4 for the split four-lane back-end).  In the
// real domain a node is one real value: the scalar bodies of every family,
// whose complex values are pairs of real nodes (ir/pair_arithmetic.h).
// Every operation acts lane by lane: additions, subtractions,
// multiplications by a literal constant per lane, lane shuffles, the widening
// and narrowing of the mixed-precision bodies, and the scale of the outputs.
// Precision is a property of a node: both operands of an addition have the
// same one.  Nodes are hash-consed, so an expression built twice is one node.
#pragma once

#include <array>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "ir/arithmetic.h"
#include "ir/exact.h"

namespace gen {

constexpr int kMaxWidth = 4;

enum class Op {
    Input,    // elements of the source array, one per lane (-1: lane holds zero)
    Zero,     // all lanes zero
    Add,
    Sub,
    Mul,      // a times the constant of each lane
    Shuffle,  // each lane copied from a lane of another node (or zero, or left spare)
    Widen,    // single to double precision, exact
    Narrow,   // double to single precision, one rounding
    Scale,    // the body's scale factor, chosen by the flag at run time
    Product,  // a times b: an output times the scale
};

enum class Domain { Complex, Real };

// How lanewise() deals the signals of a batch out to the lanes of a vector:
// in the order given, or grouped by where their first values live, for
// every batch or only for batches without multipliers.  Every grouping
// computes each value by the same operations; they differ in the shuffles
// between passes, and in which products by +-1 fill a whole vector and
// drop out.
enum class Grouping { AsGiven, ByFirstValueUnmultiplied, ByFirstValue };

struct Node {
    Op op = Op::Zero;
    int a = -1, b = -1;                 // operands
    bool isDouble = false;              // precision of the value (mixed-precision bodies)
    std::array<int, kMaxWidth> element{-1, -1, -1, -1};  // Input
    std::array<Complex, kMaxWidth> k{};                  // Mul
    std::array<Ref, kMaxWidth> from{};                   // Shuffle
};

class Graph : public Arithmetic {
public:
    explicit Graph(int width, Domain domain = Domain::Complex) : width_(width), domain_(domain) {
        if (domain == Domain::Real && width != 1) throw std::logic_error("a real graph has one lane");
    }
    int width() const override { return width_; }
    Domain domain() const { return domain_; }
    const std::vector<Node>& nodes() const { return nodes_; }
    const Node& node(int id) const { return nodes_[id]; }

    // ---- node-level operations: every lane does the same ----
    int zero() override;
    int input(const std::array<int, kMaxWidth>& elements);
    int add(int a, int b) override;
    int sub(int a, int b) override;
    int mul(int a, const Complex& c) override;
    int mulLanes(int a, const std::array<Complex, kMaxWidth>& c);
    int negate(int a);
    int shuffle(const std::array<Ref, kMaxWidth>& from);
    int widen(int a) override;
    int narrow(int a) override;
    int scale();
    int product(int a, int b);
    int valueOf(const Ref& r) override;
    bool isZero(int v) const override { return nodes_[v].op == Op::Zero; }
    // Whether a node is -x (a product by -1), and x.
    bool isNegation(int id, int& of) const;
    bool productOf(int v, int& of, Real& k) const override;

    // ---- signal-level operations: lanes are assigned here ----
    // Packs a list of values into ceil(n / width) nodes, value i in lane i % width.
    std::vector<int> pack(const std::vector<Ref>& values);
    Signal scale(const Signal& s, const std::function<Complex(int)>& constant) override;
    Signal add(const Signal& x, const Signal& y) override;
    Batch lanewise(const Batch& in, const Kernel& kernel, const Multipliers& pre = {}) override;

    // In-lane mode: every lane runs the same transform, so a signal's value is
    // a whole node and nothing is spread over lanes.  Composite transforms
    // that have a full group of signals to work on run this way.
    bool inLane() const override { return inLane_ || width_ == 1; }
    void setInLane(bool on) override { inLane_ = on; }
    void setGrouping(Grouping g) { grouping_ = g; }

    // Nodes made from here on form a later stage: the schedule writes every
    // stage whole before the next, each cut into its own pieces.  An
    // algorithm marks the point where its first stage ends and its
    // sub-transforms begin when the schedule's own cut, the middle level,
    // would fall inside the sub-transforms.
    void beginStage() { stageStarts_.push_back(static_cast<int>(nodes_.size())); }
    const std::vector<int>& stageStarts() const { return stageStarts_; }

    // The outputs of the body: element k of the destination.
    void setOutputs(Signal out) { outputs_ = std::move(out); }
    const Signal& outputs() const { return outputs_; }

    // The distinct nodes a node reads.
    std::vector<int> operandsOf(int id) const;
    // Nodes that reach an output, in creation (topological) order.
    std::vector<int> liveNodes() const;

private:
    int intern(Node n);
    static bool allOnes(const std::array<Complex, kMaxWidth>& c, int width);
    bool allUnits(const std::array<Complex, kMaxWidth>& c) const;
    bool samePrecision(int a, int b) const;

    int laneGroup() const { return inLane() ? 1 : width_; }
    std::vector<int> laneOrder(const Batch& in, bool multiplied) const;

    int width_;
    Domain domain_;
    bool inLane_ = false;
    Grouping grouping_ = Grouping::AsGiven;
    std::vector<Node> nodes_;
    std::map<std::string, int> index_;
    std::vector<int> stageStarts_;
    Signal outputs_;
};

}  // namespace gen
