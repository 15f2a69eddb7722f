// A decorator over real values that multiplies a product by a constant as
// one product: (u k) t is u (k t), rounded once, and u k is not made where
// nothing else uses it.  Bodies whose tables count a block's last product
// and the constant that follows it as one compute through it: the Hartley
// p-point passes, the real Rader forms, and the forward network that a real
// inverse body transposes.
#pragma once

#include "ir/value_arithmetic.h"

namespace gen {

class ProductFolding : public ValueArithmetic {
public:
    explicit ProductFolding(Arithmetic& parent) : parent_(parent) {}

    bool mixedPrecision() const override { return parent_.mixedPrecision(); }
    bool productOf(int v, int& of, Real& k) const override { return parent_.productOf(v, of, k); }
    int zero() override { return parent_.zero(); }
    bool isZero(int v) const override { return parent_.isZero(v); }
    int add(int a, int b) override { return parent_.add(a, b); }
    int sub(int a, int b) override { return parent_.sub(a, b); }
    int mul(int a, const Complex& c) override;
    int widen(int a) override { return parent_.widen(a); }
    int narrow(int a) override { return parent_.narrow(a); }
    using ValueArithmetic::add;

private:
    Arithmetic& parent_;
};

}  // namespace gen
