// The expression graph of one Codelet body.
//
// A node is a vector of `width` complex values (width 1 for the scalar and the
// interleaved back-ends, 4 for the split four-lane back-end).  Every operation
// acts lane by lane: additions, subtractions, multiplications by a literal
// complex constant per lane, lane shuffles, and the widening and narrowing
// that the mixed-precision scalar bodies need.  Nodes are hash-consed, so an
// expression built twice is one node.
#pragma once

#include <array>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "exact.h"

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
};

// One complex value: lane `lane` of node `node`.
struct Ref {
    static constexpr int kMemory = -2;  // lane is then the element index of the source
    static constexpr int kZero = -3;
    static constexpr int kSpare = -4;  // a lane whose value is never used: any value will do
    int node = kZero;
    int lane = 0;
    static Ref memory(int element) { return {kMemory, element}; }
    static Ref zero() { return {kZero, 0}; }
    static Ref spare() { return {kSpare, 0}; }
    bool isZero() const { return node == kZero; }
    bool isSpare() const { return node == kSpare; }
    bool isMemory() const { return node == kMemory; }
};

struct Node {
    Op op = Op::Zero;
    int a = -1, b = -1;                 // operands
    bool isDouble = false;              // precision of the value (mixed-precision bodies)
    std::array<int, kMaxWidth> element{-1, -1, -1, -1};  // Input
    std::array<Complex, kMaxWidth> k{};                  // Mul
    std::array<Ref, kMaxWidth> from{};                   // Shuffle
};

// A signal: the complex values of one transform's inputs or outputs.
using Signal = std::vector<Ref>;
// A batch: several independent signals of the same length.
using Batch = std::vector<Signal>;
// A constant per (signal of the batch, element): twiddles, Rader and Bluestein multipliers.
using Multipliers = std::function<Complex(int signal, int element)>;

// What the transform builders need of the values they compute with: the
// node graph itself, or pairs of its values standing for R + jI with a
// formal unit j (the real-coefficient networks of the tvk64fc Rader form).
class Arithmetic {
public:
    virtual ~Arithmetic() = default;
    virtual int width() const = 0;
    virtual bool inLane() const = 0;
    virtual void setInLane(bool on) = 0;

    virtual int zero() = 0;
    virtual int add(int a, int b) = 0;
    virtual int sub(int a, int b) = 0;
    virtual int mul(int a, const Complex& c) = 0;  // the same constant in all lanes
    virtual int widen(int a) = 0;
    virtual int narrow(int a) = 0;
    // The value a reference stands for, as a node of its own (in-lane only).
    virtual int valueOf(const Ref& r) = 0;
    virtual bool isZero(int v) const = 0;
    // Whether a value is known to be j-real, and its j-conjugate: only pair
    // values have a j.
    virtual bool isReal(const Ref&) const { return false; }
    virtual Ref conjugate(const Ref&) { throw std::logic_error("no j to conjugate"); }

    // Multiplies every value of a signal by its constant (ones are skipped).
    virtual Signal scale(const Signal& s, const std::function<Complex(int)>& constant) = 0;
    // Element-wise sum of two signals of the same length.
    virtual Signal add(const Signal& x, const Signal& y) = 0;

    // Runs `kernel` (a straight-line transform on values, all lanes alike) on
    // every signal of the batch, `width` signals at a time, one per lane.  If
    // `pre` is given, input j of signal t is first multiplied by pre(t, j).
    using Kernel = std::function<std::vector<int>(Arithmetic&, const std::vector<int>&)>;
    virtual Batch lanewise(const Batch& in, const Kernel& kernel, const Multipliers& pre = {}) = 0;
};

class Graph : public Arithmetic {
public:
    explicit Graph(int width) : width_(width) {}
    int width() const override { return width_; }
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
    int valueOf(const Ref& r) override;
    bool isZero(int v) const override { return nodes_[v].op == Op::Zero; }

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
    bool isNegation(int id, int& of) const;

    int laneGroup() const { return inLane() ? 1 : width_; }

    int width_;
    bool inLane_ = false;
    std::vector<Node> nodes_;
    std::map<std::string, int> index_;
    Signal outputs_;
};

// The transpose of a real-coefficient network (inputs, additions,
// subtractions, products by real constants), built on `target`: `seeds`
// gives a target value for some network nodes (their outputs), and the
// result holds, for every input element 0 to inputs - 1, the sum over all
// paths from that input to a seeded node.  A real-input DFT network
// transposed this way is a real-output inverse of the same cost.
std::vector<int> transpose(const Graph& network, const std::vector<std::pair<int, int>>& seeds, int inputs,
                           Arithmetic& target);

// Real operation counts of a body, lane by lane, without the scale.
struct OpCount {
    int additions = 0;
    int multiplications = 0;
    int complexProducts = 0;  // products by a constant with both parts nonzero
};
OpCount countOperations(const Graph& g);

}  // namespace gen
