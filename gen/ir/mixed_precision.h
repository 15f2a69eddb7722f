// The precision rule of the scalar tvk32f bodies, as a decorator over a real
// graph: single-precision values are multiplied in double (each operand
// widened once, the constant a double literal), a sum with a double operand
// is a double sum, and sums of single values stay single.  The algorithms
// mark where a block ends by narrowing what leaves it; on the graph itself
// (every other body) those narrowings change nothing.
#pragma once

#include "ir/graph.h"
#include "ir/value_arithmetic.h"

namespace gen {

class MixedPrecision : public ValueArithmetic {
public:
    explicit MixedPrecision(Graph& g) : g_(g) {}

    bool mixedPrecision() const override { return true; }
    bool productOf(int v, int& of, Real& k) const override { return g_.productOf(v, of, k); }
    Graph& graph() { return g_; }
    int zero() override { return g_.zero(); }
    bool isZero(int v) const override { return g_.isZero(v); }
    int add(int a, int b) override;
    int sub(int a, int b) override;
    // Products by +-1 are signs and keep their precision.
    int mul(int a, const Complex& c) override;
    int widen(int a) override { return g_.widen(a); }
    int narrow(int a) override { return g_.narrow(a); }
    using ValueArithmetic::add;

private:
    // Widens whichever operand is single when the other is double.
    void align(int& a, int& b);
    Graph& g_;
};

}  // namespace gen
