// The values the transform builders compute with, and the interface they
// compute through: a node graph itself, or a decorator over one.
#pragma once

#include <functional>
#include <stdexcept>
#include <vector>

#include "ir/exact.h"

namespace gen {

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
    // Whether single values are multiplied in double (the tvk32f rule).
    virtual bool mixedPrecision() const { return false; }
    // Whether a real value is k times another, `of`, for a constant k other
    // than +-1 (a product that ends a block counts through its rounding).
    virtual bool productOf(int, int&, Real&) const { return false; }
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

}  // namespace gen
