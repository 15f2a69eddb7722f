#include "algorithms/forms.h"

namespace gen {

Multipliers composePre(const Multipliers& pre, std::function<std::pair<int, int>(int, int)> origin) {
    if (!pre) return {};
    return [pre, origin](int t, int j) {
        const auto [signal, element] = origin(t, j);
        return pre(signal, element);
    };
}

namespace {

// A transform of a j-real signal (pair values only) has X[N-k] = conj X[k]:
// a join then computes its stage-two transforms for the first half of the
// stage-one bins only, and conjugates the rest.  Signals of one batch can
// differ: the rows of a join after a real first pass are real and complex.
std::vector<bool> realSignals(Arithmetic& g, const Batch& in, const Multipliers& pre) {
    std::vector<bool> real(in.size(), !pre);
    for (size_t t = 0; t < in.size(); ++t)
        for (const Ref& r : in[t]) real[t] = real[t] && g.isReal(r);
    return real;
}

void fillByConjugation(Arithmetic& g, Batch& out, const std::vector<std::vector<bool>>& filled) {
    for (size_t t = 0; t < out.size(); ++t) {
        const int N = static_cast<int>(out[t].size());
        for (int k = 0; k < N; ++k)
            if (!filled[t][k]) out[t][k] = g.conjugate(out[t][(N - k) % N]);
    }
}

}  // namespace

JoinStage firstStage(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt,
                     const Multipliers& pre) {
    const int P = plan.first->n, M = plan.second->n, N = plan.n, count = static_cast<int>(in.size());
    const bool goodThomas = plan.kind == Plan::Kind::GoodThomas;
    // Cooley-Tukey: for each residue c, the P-point transform of x[c + M j];
    // Good-Thomas: for each b, the P-point transform of x[(M a + P b) mod N].
    auto element = [=](int s, int j) { return goodThomas ? (M * j + P * (s % M)) % N : s % M + M * j; };
    Batch s1(count * M, Signal(P));
    for (int s = 0; s < count * M; ++s)
        for (int j = 0; j < P; ++j) s1[s][j] = in[s / M][element(s, j)];
    const Batch Y = transform(g, *plan.first, s1, opt,
                              composePre(pre, [=](int s, int j) { return std::pair{s / M, element(s, j)}; }));
    const std::vector<bool> real = realSignals(g, in, pre);
    JoinStage stage;
    for (int t = 0; t < count; ++t)
        for (int bin = 0; bin < (real[t] ? P / 2 + 1 : P); ++bin) {
            Signal row(M);
            for (int c = 0; c < M; ++c) row[c] = Y[t * M + c][bin];
            stage.rows.push_back(row);
            stage.origin.emplace_back(t, bin);
        }
    return stage;
}

int joinedBin(const Plan& plan, int bin, int k2) {
    const int P = plan.first->n, M = plan.second->n;
    if (plan.kind == Plan::Kind::CooleyTukey) return bin + P * k2;
    int k = 0;  // k = bin mod P, k = k2 mod M
    while (k % P != bin || k % M != k2) ++k;
    return k;
}

Complex joinTwiddle(const Plan& plan, const DftOptions& opt, int bin, int c) {
    if (plan.kind == Plan::Kind::GoodThomas) return Complex::one();
    return rootOfUnity(c * bin, plan.n, opt.sign);
}

// Stage two runs on the rows; a Good-Thomas join may give its bin-0 rows a
// transform of their own.  Joins of real signals conjugate the bins of the
// rows they skip.
Batch join(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre) {
    const JoinStage stage = firstStage(g, plan, in, opt, pre);
    Batch out(in.size(), Signal(plan.n));
    std::vector<std::vector<bool>> filled(in.size(), std::vector<bool>(plan.n, false));
    auto stageTwo = [&](const Plan& second, bool binZero) {
        Batch rows;
        std::vector<std::pair<int, int>> origin;
        for (size_t s = 0; s < stage.rows.size(); ++s)
            if (!plan.secondOfBinZero || (stage.origin[s].second == 0) == binZero) {
                rows.push_back(stage.rows[s]);
                origin.push_back(stage.origin[s]);
            }
        if (rows.empty()) return;
        const Multipliers twiddles = plan.kind == Plan::Kind::CooleyTukey
                                         ? Multipliers([&](int s, int c) { return joinTwiddle(plan, opt, origin[s].second, c); })
                                         : Multipliers{};
        const Batch Z = transform(g, second, rows, opt, twiddles);
        for (size_t s = 0; s < Z.size(); ++s) {
            const auto [t, bin] = origin[s];
            for (int k2 = 0; k2 < second.n; ++k2) {
                const int k = joinedBin(plan, bin, k2);
                out[t][k] = Z[s][k2];
                filled[t][k] = true;
            }
        }
    };
    if (plan.secondOfBinZero) stageTwo(*plan.secondOfBinZero, true);
    stageTwo(*plan.second, false);
    fillByConjugation(g, out, filled);
    return out;
}

// A composite transform on a whole number of lane groups runs in-lane: one
// copy of its code, every lane on a different signal, no shuffles inside.
Batch inLane(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre) {
    auto kernel = [&plan, &opt](Arithmetic& g, const Nodes& x) {
        g.setInLane(true);
        Signal s;
        for (int v : x) s.push_back({v, 0});
        const Batch r = transform(g, plan, Batch{s}, opt);
        g.setInLane(false);
        Nodes out;
        for (const Ref& ref : r[0]) out.push_back(ref.isZero() ? g.zero() : ref.node);
        return out;
    };
    return g.lanewise(in, kernel, pre);
}

}  // namespace gen
