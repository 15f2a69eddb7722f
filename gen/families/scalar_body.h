// A scalar body under construction: a real-domain graph, the arithmetic its
// transforms run on, and its stores with their scale.  The real DFT, Hartley
// and short complex families are written this way.
#pragma once

#include <memory>
#include <string>

#include "ir/count.h"
#include "ir/graph.h"
#include "ir/mixed_precision.h"
#include "ir/pair_arithmetic.h"

namespace gen {

class ScalarBody {
public:
    // How an output meets the scale in a tvk32f body.
    enum class Scaling {
        Single,     // every output is narrowed, then scaled in single precision
        AsItLeaves  // an output that leaves its last block in double is scaled
                    // in double and narrowed for the store; the others in single
    };

    // `single`: tvk32f elements, products in double (MixedPrecision); else
    // tvk64f throughout.
    ScalarBody(bool single, Scaling scaling = Scaling::Single);

    Graph& graph() { return graph_; }
    // Real values, and complex values as pairs of them.
    Arithmetic& real() { return *real_; }
    PairArithmetic& complex() { return complex_; }

    int load(int element) { return graph_.input({element, -1, -1, -1}); }
    // dst[element] = s * value, the scale the last multiplication.
    void store(int element, int value);
    // dst[element] = +0, a constant whatever the input.
    void storeZero(int element);

    // The statements of the body, and its operation counts.
    std::string text() const;
    OpCount count() const { return countOperations(graph_); }

private:
    int scaled(int value);

    bool single_;
    Scaling scaling_;
    Graph graph_{1, Domain::Real};
    MixedPrecision mixed_{graph_};
    Arithmetic* real_;
    PairArithmetic complex_;
    Signal stores_;
};

}  // namespace gen
