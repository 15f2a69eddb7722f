#include "families/scalar_body.h"

#include "emit/emit.h"

namespace gen {

ScalarBody::ScalarBody(bool single, Scaling scaling)
    : single_(single),
      scaling_(scaling),
      real_(single ? static_cast<Arithmetic*>(&mixed_) : &graph_),
      complex_(*real_) {}

int ScalarBody::scaled(int value) {
    int magnitude = value;
    const bool negated = graph_.isNegation(value, magnitude);
    const Node& n = graph_.node(magnitude);
    int product;
    if (scaling_ == Scaling::AsItLeaves && n.op == Op::Narrow)
        product = graph_.narrow(graph_.product(n.a, graph_.widen(graph_.scale())));
    else
        product = graph_.product(graph_.narrow(magnitude), graph_.scale());
    return negated ? graph_.negate(product) : product;
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
