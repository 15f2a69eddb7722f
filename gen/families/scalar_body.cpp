#include "families/scalar_body.h"

#include "emit/emit.h"

namespace gen {

ScalarBody::ScalarBody(bool single, Scaling scaling)
    : single_(single),
      scaling_(scaling),
      real_(single ? static_cast<Arithmetic*>(&mixed_) : &graph_),
      complex_(*real_) {}

// A negative output is the magnitude times the negated scale: the same bits
// as the flip of the product's sign, and the back-end makes the negated
// scale once for the whole body.
int ScalarBody::scaled(int value) {
    int magnitude = value;
    const bool negated = graph_.isNegation(value, magnitude);
    const int scale = negated ? graph_.negate(graph_.scale()) : graph_.scale();
    const Node& n = graph_.node(magnitude);
    if (scaling_ == Scaling::AsItLeaves && n.op == Op::Narrow)
        return graph_.narrow(graph_.product(n.a, graph_.widen(scale)));
    return graph_.product(graph_.narrow(magnitude), scale);
}

void ScalarBody::store(int element, int value) {
    if (element >= static_cast<int>(stores_.size())) stores_.resize(element + 1, Ref::zero());
    stores_[element] = graph_.isZero(value) ? Ref::zero() : Ref{scaled(value), 0};
    graph_.setOutputs(stores_);
}

void ScalarBody::storeZero(int element) {
    if (element >= static_cast<int>(stores_.size())) stores_.resize(element + 1, Ref::zero());
    stores_[element] = Ref::zero();
    graph_.setOutputs(stores_);
}

std::string ScalarBody::text() const { return emitScalar(graph_, single_); }

}  // namespace gen
