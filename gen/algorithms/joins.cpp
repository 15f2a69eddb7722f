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

Batch cooleyTukey(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre) {
    const int P = plan.first->n, M = plan.second->n, N = plan.n, count = static_cast<int>(in.size());
    const std::vector<bool> real = realSignals(g, in, pre);
    // Stage one: for each residue c, the P-point transform of x[c + M j].
    Batch s1(count * M, Signal(P));
    for (int t = 0; t < count; ++t)
        for (int c = 0; c < M; ++c)
            for (int j = 0; j < P; ++j) s1[t * M + c][j] = in[t][c + M * j];
    const Batch Y = transform(g, *plan.first, s1, opt,
                              composePre(pre, [M](int s, int j) { return std::pair{s / M, s % M + M * j}; }));
    // Stage two: for each k1, the M-point transform over c of Y[c][k1] * w^(c k1).
    Batch s2;
    std::vector<std::pair<int, int>> origin;  // (t, k1) of each stage-two signal
    for (int t = 0; t < count; ++t)
        for (int k1 = 0; k1 < (real[t] ? P / 2 + 1 : P); ++k1) {
            Signal s(M);
            for (int c = 0; c < M; ++c) s[c] = Y[t * M + c][k1];
            s2.push_back(s);
            origin.emplace_back(t, k1);
        }
    const int sign = opt.sign;
    const Batch Z = transform(g, *plan.second, s2, opt, [&origin, N, sign](int s, int c) {
        return rootOfUnity(c * origin[s].second, N, sign);
    });
    Batch out(count, Signal(N));
    std::vector<std::vector<bool>> filled(count, std::vector<bool>(N, false));
    for (size_t s = 0; s < Z.size(); ++s) {
        const auto [t, k1] = origin[s];
        for (int k2 = 0; k2 < M; ++k2) {
            out[t][k1 + P * k2] = Z[s][k2];
            filled[t][k1 + P * k2] = true;
        }
    }
    fillByConjugation(g, out, filled);
    return out;
}

Batch goodThomas(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre) {
    const int P = plan.first->n, M = plan.second->n, N = plan.n, count = static_cast<int>(in.size());
    const std::vector<bool> real = realSignals(g, in, pre);
    Batch s1(count * M, Signal(P));
    for (int t = 0; t < count; ++t)
        for (int b = 0; b < M; ++b)
            for (int a = 0; a < P; ++a) s1[t * M + b][a] = in[t][(M * a + P * b) % N];
    const Batch Y = transform(g, *plan.first, s1, opt, composePre(pre, [M, P, N](int s, int a) {
                                  return std::pair{s / M, (M * a + P * (s % M)) % N};
                              }));
    // Stage two on each bin a of stage one; bin 0 may have a transform of its own.
    Batch out(count, Signal(N));
    std::vector<std::vector<bool>> filled(count, std::vector<bool>(N, false));
    auto stageTwo = [&](const Plan& second, int firstBin, bool binZeroOnly) {
        Batch s2;
        std::vector<std::pair<int, int>> origin;  // (t, a) of each stage-two signal
        for (int t = 0; t < count; ++t)
            for (int a = firstBin; a <= (binZeroOnly ? 0 : real[t] ? P / 2 : P - 1); ++a) {
                Signal s(M);
                for (int b = 0; b < M; ++b) s[b] = Y[t * M + b][a];
                s2.push_back(s);
                origin.emplace_back(t, a);
            }
        const Batch Z = transform(g, second, s2, opt);
        for (size_t s = 0; s < Z.size(); ++s) {
            const auto [t, a] = origin[s];
            for (int k2 = 0; k2 < M; ++k2) {
                int k = 0;  // k = a mod P, k = k2 mod M
                while (k % P != a || k % M != k2) ++k;
                out[t][k] = Z[s][k2];
                filled[t][k] = true;
            }
        }
    };
    if (plan.secondOfBinZero) {
        stageTwo(*plan.secondOfBinZero, 0, true);
        stageTwo(*plan.second, 1, false);
    } else {
        stageTwo(*plan.second, 0, false);
    }
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
