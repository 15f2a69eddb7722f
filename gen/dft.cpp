#include "dft.h"

#include <cctype>
#include <stdexcept>

#include "pair_arithmetic.h"

namespace gen {

// ---------------------------------------------------------------- plan notation

namespace {

class PlanParser {
public:
    PlanParser(const std::string& text, const PlanLookup& table) : s_(text), table_(table) {}

    std::shared_ptr<Plan> parse() {
        auto p = expression();
        if (pos_ != s_.size()) fail("unexpected text");
        return p;
    }

private:
    [[noreturn]] void fail(const std::string& why) const {
        throw std::invalid_argument("plan \"" + s_ + "\": " + why + " at " + std::to_string(pos_));
    }
    bool peek(char c) const { return pos_ < s_.size() && s_[pos_] == c; }
    void expect(char c) {
        if (!peek(c)) fail(std::string("expected '") + c + "'");
        ++pos_;
    }
    int number() {
        if (pos_ >= s_.size() || !std::isdigit(static_cast<unsigned char>(s_[pos_]))) fail("expected a number");
        int v = 0;
        while (pos_ < s_.size() && std::isdigit(static_cast<unsigned char>(s_[pos_]))) v = v * 10 + (s_[pos_++] - '0');
        return v;
    }

    std::shared_ptr<Plan> expression() {
        auto left = term();
        while (peek('x') || peek('.')) {
            const bool goodThomas = s_[pos_++] == 'x';
            auto join = std::make_shared<Plan>();
            join->kind = goodThomas ? Plan::Kind::GoodThomas : Plan::Kind::CooleyTukey;
            join->first = left;
            if (peek('[')) {  // [transform of bin 0 | transform of the other bins]
                ++pos_;
                join->secondOfBinZero = expression();
                expect('|');
                join->second = expression();
                expect(']');
            } else {
                join->second = term();
            }
            join->n = join->first->n * join->second->n;
            left = join;
        }
        return left;
    }

    std::shared_ptr<Plan> term() {
        const size_t start = pos_;
        std::shared_ptr<Plan> p;
        if (peek('(')) {
            ++pos_;
            p = expression();
            expect(')');
        } else if (s_.compare(pos_, 2, "SR") == 0) {
            pos_ += 2;
            p = std::make_shared<Plan>();
            p->kind = Plan::Kind::SplitRadix;
            p->n = number();
        } else {
            p = std::make_shared<Plan>();
            p->n = number();
            if (peek('d')) {
                ++pos_;
                p->kind = Plan::Kind::Direct;
            } else if (peek('w')) {
                ++pos_;
                if (p->n != 5) fail("only 5 has a w form");
                p->kind = Plan::Kind::FiveW;
            } else if (peek('r')) {
                ++pos_;
                p->kind = Plan::Kind::Rader;
                p->root = primitiveRoot(p->n);
                if (peek('[')) {  // [forward transform | back transform]
                    ++pos_;
                    p->first = expression();
                    expect('|');
                    p->second = expression();
                    expect(']');
                } else {
                    p->first = p->second = table_(p->n - 1);
                }
            } else if (peek('b')) {
                ++pos_;
                p->kind = Plan::Kind::Bluestein;
                const int padded = number();
                p->first = p->second = table_(padded);
            } else {
                if (p->n < 2 || p->n > 5) fail("no small form of this length");
                p->kind = Plan::Kind::Small;
            }
        }
        p->text = s_.substr(start, pos_ - start);
        return p;
    }

    static int primitiveRoot(int p) {
        for (int g = 2; g < p; ++g) {
            int v = 1, order = 0;
            do {
                v = v * g % p;
                ++order;
            } while (v != 1);
            if (order == p - 1) return g;
        }
        throw std::invalid_argument("no primitive root");
    }

    std::string s_;
    size_t pos_ = 0;
    const PlanLookup& table_;
};

int powMod(int base, int exp, int mod) {
    long long r = 1, b = base % mod;
    for (; exp > 0; exp >>= 1, b = b * b % mod)
        if (exp & 1) r = r * b % mod;
    return static_cast<int>(r);
}

Complex realConst(const Fixed& v) { return Complex::real(v); }
Complex imagConst(const Fixed& v) { return {Real::ofInt(0), Real::of(v)}; }
// Multiplication by sign*i: a renaming of the two parts, with a sign.
Complex rotation(int sign) { return {Real::ofInt(0), Real::ofInt(sign)}; }

}  // namespace

std::shared_ptr<Plan> parsePlan(const std::string& text, const PlanLookup& table) {
    return PlanParser(text, table).parse();
}

// ---------------------------------------------------------------- small forms

namespace {

using Nodes = std::vector<int>;

Nodes dft2(Arithmetic& g, const Nodes& x) { return {g.add(x[0], x[1]), g.sub(x[0], x[1])}; }

// Products of the single-precision 3 and 5 are formed in double and rounded once.
struct Precise {
    Arithmetic& g;
    bool on;
    int in(int a) const { return on ? g.widen(a) : a; }
    int out(int a) const { return on ? g.narrow(a) : a; }
};

Nodes dft3(Arithmetic& g, const Nodes& x, const DftOptions& opt) {
    const Precise p{g, opt.doubleProducts};
    const int a = g.add(x[1], x[2]), d = g.sub(x[1], x[2]);
    const int X0 = g.add(x[0], a);
    const int m = p.out(g.sub(p.in(x[0]), g.mul(p.in(a), realConst(Fixed::ratio(1, 2)))));
    const int e = p.out(g.mul(p.in(d), imagConst(sinTurn(1, 3).mulInt(opt.sign))));
    return {X0, g.add(m, e), g.sub(m, e)};
}

Nodes dft4(Arithmetic& g, const Nodes& x, const DftOptions& opt) {
    const int a = g.add(x[0], x[2]), b = g.sub(x[0], x[2]);
    const int c = g.add(x[1], x[3]), d = g.sub(x[1], x[3]);
    const int r = g.mul(d, rotation(opt.sign));
    return {g.add(a, c), g.add(b, r), g.sub(a, c), g.sub(b, r)};
}

// The 5-point form.  `w` selects the variant with t = a + b, m = x0 - t/4 and
// n = sqrt(5)/4 * (a - b) in place of the two cosine sums.
Nodes dft5(Arithmetic& g, const Nodes& x, const DftOptions& opt, bool w) {
    const Precise p{g, opt.doubleProducts};
    const Complex c1 = realConst(cosTurn(1, 5)), c2 = realConst(-cosTurn(2, 5));
    const Complex s1 = realConst(sinTurn(1, 5)), s2 = realConst(sinTurn(2, 5));
    const int a = g.add(x[1], x[4]), d = g.sub(x[1], x[4]);
    const int b = g.add(x[3], x[2]), e = g.sub(x[3], x[2]);
    int X0, P, Q;
    if (w) {
        const int t = g.add(a, b);
        X0 = g.add(x[0], t);
        const int m = g.sub(x[0], g.mul(t, realConst(Fixed::ratio(1, 4))));
        // sqrt(5)/4 = (cos 72 - cos 144) / 2
        const int n = g.mul(g.sub(a, b), realConst((cosTurn(1, 5) - cosTurn(2, 5)).divInt(2)));
        P = g.add(m, n);
        Q = g.sub(m, n);
    } else {
        X0 = g.add(g.add(x[0], a), b);
        const int x0 = p.in(x[0]), wa = p.in(a), wb = p.in(b);
        P = p.out(g.sub(g.add(g.mul(wa, c1), x0), g.mul(wb, c2)));
        Q = p.out(g.add(g.sub(x0, g.mul(wa, c2)), g.mul(wb, c1)));
    }
    const int wd = p.in(d), we = p.in(e);
    const int u = g.mul(p.out(g.sub(g.mul(wd, s1), g.mul(we, s2))), rotation(opt.sign));
    const int v = g.mul(p.out(g.add(g.mul(wd, s2), g.mul(we, s1))), rotation(opt.sign));
    return {X0, g.add(P, u), g.add(Q, v), g.sub(Q, v), g.sub(P, u)};
}

// Form D, direct pairing of x[j] with x[p-j]; signs of the cosines and sines
// are folded into the additions.
Nodes direct(Arithmetic& g, const Nodes& x, const DftOptions& opt) {
    const int p = static_cast<int>(x.size()), L = (p - 1) / 2;
    Nodes a(L + 1), d(L + 1);
    for (int j = 1; j <= L; ++j) {
        a[j] = g.add(x[j], x[p - j]);
        d[j] = g.sub(x[j], x[p - j]);
    }
    int sum = a[1];
    for (int j = 2; j <= L; ++j) sum = g.add(sum, a[j]);
    Nodes X(p);
    X[0] = g.add(x[0], sum);
    for (int k = 1; k <= L; ++k) {
        int E = x[0], O = -1;
        for (int j = 1; j <= L; ++j) {
            const Fixed c = cosTurn(j * k, p);
            const int term = g.mul(a[j], realConst(c.isNegative() ? -c : c));
            E = c.isNegative() ? g.sub(E, term) : g.add(E, term);
            // sign * i * sin: X[k] = E + O with O = sum of sign*i*sin(2 pi jk/p) d[j]
            const Fixed s = sinTurn(j * k, p).mulInt(opt.sign);
            const int sterm = g.mul(d[j], imagConst(s.isNegative() ? -s : s));
            if (O < 0) O = s.isNegative() ? g.mul(sterm, realConst(Fixed::fromInt(-1))) : sterm;
            else O = s.isNegative() ? g.sub(O, sterm) : g.add(O, sterm);
        }
        X[k] = g.add(E, O);
        X[p - k] = g.sub(E, O);
    }
    return X;
}

// Split radix, decimation in frequency.  The rotations act on the 2-point
// differences; at n = N/8 both rotations share the products h*a and h*b.
Nodes splitRadix(Arithmetic& g, const Nodes& x, const DftOptions& opt) {
    const int N = static_cast<int>(x.size());
    if (N == 1) return x;
    if (N == 2) return dft2(g, x);
    if (N == 4) return dft4(g, x, opt);
    Nodes u(N / 2), z1(N / 4), z3(N / 4);
    for (int n = 0; n < N / 2; ++n) u[n] = g.add(x[n], x[n + N / 2]);
    const Complex minusOne = realConst(Fixed::fromInt(-1));
    for (int n = 0; n < N / 4; ++n) {
        const int a = g.sub(x[n], x[n + N / 2]);
        const int b = g.sub(x[n + N / 4], x[n + 3 * N / 4]);
        if (n == 0) {
            const int ib = g.mul(b, rotation(opt.sign));
            z1[n] = g.add(a, ib);
            z3[n] = g.sub(a, ib);
        } else if (8 * n == N) {
            const Complex h = realConst(cosTurn(1, 8));
            const int r = g.mul(a, h), t = g.mul(b, h);
            const int A = g.add(r, t), B = g.sub(r, t);
            z1[n] = g.add(B, g.mul(A, rotation(opt.sign)));
            z3[n] = g.mul(g.sub(B, g.mul(A, rotation(opt.sign))), minusOne);
        } else {
            const int ib = g.mul(b, rotation(opt.sign));
            z1[n] = g.mul(g.add(a, ib), rootOfUnity(n, N, opt.sign));
            z3[n] = g.mul(g.sub(a, ib), rootOfUnity(3 * n, N, opt.sign));
        }
    }
    const Nodes U = splitRadix(g, u, opt), Z1 = splitRadix(g, z1, opt), Z3 = splitRadix(g, z3, opt);
    Nodes X(N);
    for (int k = 0; k < N / 2; ++k) X[2 * k] = U[k];
    for (int k = 0; k < N / 4; ++k) {
        X[4 * k + 1] = Z1[k];
        X[4 * k + 3] = Z3[k];
    }
    return X;
}

Arithmetic::Kernel kernelOf(const Plan& plan, const DftOptions& opt) {
    switch (plan.kind) {
        case Plan::Kind::Small:
            switch (plan.n) {
                case 2: return [](Arithmetic& g, const Nodes& x) { return dft2(g, x); };
                case 3: return [opt](Arithmetic& g, const Nodes& x) { return dft3(g, x, opt); };
                case 4: return [opt](Arithmetic& g, const Nodes& x) { return dft4(g, x, opt); };
                default: return [opt](Arithmetic& g, const Nodes& x) { return dft5(g, x, opt, false); };
            }
        case Plan::Kind::FiveW: return [opt](Arithmetic& g, const Nodes& x) { return dft5(g, x, opt, true); };
        case Plan::Kind::Direct: return [opt](Arithmetic& g, const Nodes& x) { return direct(g, x, opt); };
        case Plan::Kind::SplitRadix: return [opt](Arithmetic& g, const Nodes& x) { return splitRadix(g, x, opt); };
        default: throw std::logic_error("not a kernel");
    }
}

// ---------------------------------------------------------------- joins

Multipliers composePre(const Multipliers& pre, std::function<std::pair<int, int>(int, int)> origin) {
    if (!pre) return {};
    return [pre, origin](int t, int j) {
        const auto [signal, element] = origin(t, j);
        return pre(signal, element);
    };
}

// A transform of j-real signals (pair values only) has X[N-k] = conj X[k]:
// a join then computes its stage-two transforms for the first half of the
// stage-one bins only, and conjugates the rest.
bool allReal(Arithmetic& g, const Batch& in, const Multipliers& pre) {
    if (pre) return false;
    for (const Signal& s : in)
        for (const Ref& r : s)
            if (!g.isReal(r)) return false;
    return true;
}

void fillByConjugation(Arithmetic& g, Batch& out, const std::vector<std::vector<bool>>& filled) {
    for (size_t t = 0; t < out.size(); ++t) {
        const int N = static_cast<int>(out[t].size());
        for (int k = 0; k < N; ++k)
            if (!filled[t][k]) out[t][k] = g.conjugate(out[t][(N - k) % N]);
    }
}

Batch cooleyTukey(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre) {
    const int P = plan.first->n, M = plan.second->n, N = plan.n, count = static_cast<int>(in.size());
    const int rows = allReal(g, in, pre) ? P / 2 + 1 : P;
    // Stage one: for each residue c, the P-point transform of x[c + M j].
    Batch s1(count * M, Signal(P));
    for (int t = 0; t < count; ++t)
        for (int c = 0; c < M; ++c)
            for (int j = 0; j < P; ++j) s1[t * M + c][j] = in[t][c + M * j];
    const Batch Y = transform(g, *plan.first, s1, opt,
                              composePre(pre, [M](int s, int j) { return std::pair{s / M, s % M + M * j}; }));
    // Stage two: for each k1, the M-point transform over c of Y[c][k1] * w^(c k1).
    Batch s2(count * rows, Signal(M));
    for (int t = 0; t < count; ++t)
        for (int k1 = 0; k1 < rows; ++k1)
            for (int c = 0; c < M; ++c) s2[t * rows + k1][c] = Y[t * M + c][k1];
    const int sign = opt.sign;
    const Batch Z = transform(g, *plan.second, s2, opt,
                              [rows, N, sign](int s, int c) { return rootOfUnity(c * (s % rows), N, sign); });
    Batch out(count, Signal(N));
    std::vector<std::vector<bool>> filled(count, std::vector<bool>(N, false));
    for (int t = 0; t < count; ++t)
        for (int k1 = 0; k1 < rows; ++k1)
            for (int k2 = 0; k2 < M; ++k2) {
                out[t][k1 + P * k2] = Z[t * rows + k1][k2];
                filled[t][k1 + P * k2] = true;
            }
    fillByConjugation(g, out, filled);
    return out;
}

Batch goodThomas(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre) {
    const int P = plan.first->n, M = plan.second->n, N = plan.n, count = static_cast<int>(in.size());
    Batch s1(count * M, Signal(P));
    for (int t = 0; t < count; ++t)
        for (int b = 0; b < M; ++b)
            for (int a = 0; a < P; ++a) s1[t * M + b][a] = in[t][(M * a + P * b) % N];
    const Batch Y = transform(g, *plan.first, s1, opt, composePre(pre, [M, P, N](int s, int a) {
                                  return std::pair{s / M, (M * a + P * (s % M)) % N};
                              }));
    // Stage two on each bin a of stage one; bin 0 may have a transform of its own.
    const int lastBin = allReal(g, in, pre) ? P / 2 : P - 1;
    Batch out(count, Signal(N));
    std::vector<std::vector<bool>> filled(count, std::vector<bool>(N, false));
    auto stageTwo = [&](const Plan& second, int firstBin, int lastBin) {
        Batch s2;
        for (int t = 0; t < count; ++t)
            for (int a = firstBin; a <= lastBin; ++a) {
                Signal s(M);
                for (int b = 0; b < M; ++b) s[b] = Y[t * M + b][a];
                s2.push_back(s);
            }
        const Batch Z = transform(g, second, s2, opt);
        const int bins = lastBin - firstBin + 1;
        for (int t = 0; t < count; ++t)
            for (int a = firstBin; a <= lastBin; ++a)
                for (int k2 = 0; k2 < M; ++k2) {
                    int k = 0;  // k = a mod P, k = k2 mod M
                    while (k % P != a || k % M != k2) ++k;
                    out[t][k] = Z[t * bins + (a - firstBin)][k2];
                    filled[t][k] = true;
                }
    };
    if (plan.secondOfBinZero) {
        stageTwo(*plan.secondOfBinZero, 0, 0);
        stageTwo(*plan.second, 1, lastBin);
    } else {
        stageTwo(*plan.second, 0, lastBin);
    }
    fillByConjugation(g, out, filled);
    return out;
}

// ---------------------------------------------------------------- prime forms

Signal gatherInputs(const Batch& in, int element) {
    Signal s;
    for (const Signal& x : in) s.push_back(x[element]);
    return s;
}

// Rader's multipliers B[k] = (1/n) sum_m w^(g^-m mod p) exp(-2 pi i m k / n).
std::vector<Complex> raderMultipliers(int p, int root, int sign) {
    const int n = p - 1, inverseRoot = powMod(root, p - 2, p);
    std::vector<Complex> B(n);
    for (int k = 0; k < n; ++k) {
        Fixed re, im;
        for (int m = 0; m < n; ++m) {
            const Complex prod = rootOfUnity(powMod(inverseRoot, m, p), p, sign) *
                                 rootOfUnity(static_cast<int64_t>(m) * k, n, -1);
            re = re + prod.re.exact;
            im = im + prod.im.exact;
        }
        B[k] = Complex::of(re.divInt(n), im.divInt(n));
    }
    return B;
}

// The inner transforms of Rader and Bluestein are a forward and an
// unnormalised inverse DFT in both directions; only the root of unity in the
// multipliers changes.
std::pair<DftOptions, DftOptions> convolutionOptions(const DftOptions& opt) {
    DftOptions forward = opt, backward = opt;
    forward.sign = -1;
    backward.sign = +1;
    forward.doubleProducts = backward.doubleProducts = false;
    return {forward, backward};
}

// Complex-multiplier form: every bin is multiplied by its B[k] in full.
Batch rader(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre) {
    const int p = plan.n, n = p - 1, root = plan.root, count = static_cast<int>(in.size());
    Batch a(count, Signal(n));
    for (int t = 0; t < count; ++t)
        for (int m = 0; m < n; ++m) a[t][m] = in[t][powMod(root, m, p)];
    Signal x0 = gatherInputs(in, 0);
    if (pre) x0 = g.scale(x0, [&](int t) { return pre(t, 0); });
    const auto [forward, backward] = convolutionOptions(opt);
    const Batch A = transform(g, *plan.first, a, forward,
                              composePre(pre, [root, p](int t, int m) { return std::pair{t, powMod(root, m, p)}; }));
    const std::vector<Complex> B = raderMultipliers(p, root, opt.sign);
    const Signal A0 = gatherInputs(A, 0);
    const Signal X0 = g.add(x0, A0);
    const Signal C0 = g.add(g.scale(A0, [&](int) { return B[0]; }), x0);
    Batch C = A;
    for (int t = 0; t < count; ++t) C[t][0] = C0[t];
    const Batch c = transform(g, *plan.second, C, backward,
                              [&B](int, int k) { return k == 0 ? Complex::one() : B[k]; });
    const int inverseRoot = powMod(root, p - 2, p);
    Batch out(count, Signal(p));
    for (int t = 0; t < count; ++t) {
        out[t][0] = X0[t];
        for (int q = 0; q < n; ++q) out[t][powMod(inverseRoot, q, p)] = c[t][q];
    }
    return out;
}

// The bins 0 to n/2 of the forward DFT of length n of a j-real sequence
// whose pair sums s[m] = a[m] + a[m + n/2] and differences d[m] = a[m] -
// a[m + n/2] are given: even bins depend on s alone, odd bins on d alone, so
// each comes from the length-n plan on s or d padded with zeros.  Returns
// (R, I) of every bin as values of `target`.
// A Good-Thomas join whose even factor comes second runs it first here (the
// joined transform is the same): its stage on m, m + n/2 then meets the
// zeros of the padding first, and the odd factor's transforms of the
// padded sequence coincide.
std::vector<std::pair<int, int>> halfSpectrum(Arithmetic& target, const Plan& plan, const std::vector<int>& s,
                                              const std::vector<int>& d, const DftOptions& forward) {
    const int n = plan.n, h = n / 2;
    Plan pairingFirst = plan;
    if (plan.kind == Plan::Kind::GoodThomas && plan.second->n % 2 == 0 && !plan.secondOfBinZero)
        std::swap(pairingFirst.first, pairingFirst.second);
    PairArithmetic pairs(target);
    auto padded = [&](const std::vector<int>& half) {
        Signal x(n, Ref::zero());
        for (int m = 0; m < h; ++m) x[m] = {pairs.lift(half[m]), 0};
        return transform(pairs, pairingFirst, Batch{x}, forward)[0];
    };
    const Signal even = padded(s), odd = padded(d);
    std::vector<std::pair<int, int>> bins;
    for (int k = 0; k <= h; ++k) {
        const int v = pairs.valueOf(k % 2 == 0 ? even[k] : odd[k]);
        bins.emplace_back(pairs.re(v), pairs.im(v));
    }
    return bins;
}

// Deferred-rotation form.  With j a formal unit, the convolution is
// c[q] = E[q] + jO[q], where E is the cyclic correlation of the pair sums
// with the cosines and O the negacyclic one of the pair differences with the
// sines (g^(n/2) = -1 pairs x[k] with x[p-k]); X = E +- iO only at the end.
// The forward half spectrum is a real-coefficient network, and E and O come
// out of its transpose, a real-output inverse of the same cost, fed with the
// products: bins k and n-k share one rotation by P = 2 Re B[k], Q = 2 Im B[k].
Batch raderDeferred(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt,
                    const Multipliers& pre) {
    const int p = plan.n, n = p - 1, h = n / 2, root = plan.root, count = static_cast<int>(in.size());
    const std::vector<Complex> B = raderMultipliers(p, root, opt.sign);
    const DftOptions forward = convolutionOptions(opt).first;
    // The network once more on symbolic inputs (s then d), to be transposed;
    // it is built by the plan of the back transform.
    Graph network(1);
    std::vector<int> symbolicS, symbolicD;
    for (int m = 0; m < h; ++m) {
        symbolicS.push_back(network.input({m, -1, -1, -1}));
        symbolicD.push_back(network.input({h + m, -1, -1, -1}));
    }
    const auto symbolic = halfSpectrum(network, *plan.second, symbolicS, symbolicD, forward);
    auto product = [&g](int v, const Fixed& k) { return k.isZero() ? g.zero() : g.mul(v, Complex::real(k)); };

    const int inverseRoot = powMod(root, p - 2, p);
    Batch out(count, Signal(p));
    for (int t = 0; t < count; ++t) {
        auto fetch = [&](int element) {
            const int v = g.valueOf(in[t][element]);
            return pre ? g.mul(v, pre(t, element)) : v;
        };
        const int x0 = fetch(0);
        std::vector<int> s(h), d(h);
        for (int m = 0; m < h; ++m) {
            const int u = fetch(powMod(root, m, p)), w = fetch(powMod(root, m + h, p));
            s[m] = g.add(u, w);
            d[m] = g.sub(u, w);
        }
        const auto A = halfSpectrum(g, *plan.first, s, d, forward);
        std::vector<std::pair<int, int>> seeds;
        auto seed = [&](int node, int value) {
            if (network.node(node).op != Op::Zero) seeds.emplace_back(node, value);
        };
        // Bin 0: -1/n on the sum, plus x[0].
        seed(symbolic[0].first, g.add(product(A[0].first, B[0].re.exact), x0));
        for (int k = 1; k <= h; ++k) {
            const int factor = k == h ? 1 : 2;
            const Fixed P = B[k].re.exact.mulInt(factor), Q = B[k].im.exact.mulInt(factor);
            const auto [R, I] = A[k];
            const int re = g.sub(product(R, P), product(I, Q)), im = g.add(product(R, Q), product(I, P));
            // Even bins feed E with C[k]; odd bins feed O with -jC[k].
            if (k % 2 == 0) {
                seed(symbolic[k].first, re);
                seed(symbolic[k].second, im);
            } else {
                seed(symbolic[k].first, im);
                seed(symbolic[k].second, g.mul(re, -Complex::one()));
            }
        }
        const std::vector<int> EO = transpose(network, seeds, n, g);
        out[t][0] = {g.add(x0, A[0].first), 0};
        for (int q = 0; q < h; ++q) {
            const int E = EO[q], iO = g.mul(EO[h + q], rotation(+1));
            out[t][powMod(inverseRoot, q, p)] = {g.add(E, iO), 0};
            out[t][powMod(inverseRoot, q + h, p)] = {g.sub(E, iO), 0};
        }
    }
    return out;
}

Batch bluestein(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre) {
    const int p = plan.n, L = plan.first->n, half = (p + 1) / 2, count = static_cast<int>(in.size());
    if (pre) throw std::logic_error("Bluestein is a whole body, never a factor");
    std::vector<Complex> chirp(p);
    for (int k = 0; k < p; ++k) chirp[k] = rootOfUnity(static_cast<int64_t>(half) * k * k % p, p, opt.sign);
    // y = x * chirp, zero from p on; the vector bodies also fetch x[p] and multiply it by 0.
    Batch y(count, Signal(L, Ref::zero()));
    for (int t = 0; t < count; ++t) {
        for (int k = 0; k < p; ++k) y[t][k] = in[t][k];
        if (opt.bluesteinReadsPast) y[t][p] = Ref::memory(p);
    }
    const Complex zero = Complex::real(Fixed{});
    const auto [forward, backward] = convolutionOptions(opt);
    const Batch Y = transform(g, *plan.first, y, forward,
                              [&](int, int k) { return k < p ? chirp[k] : zero; });
    // H[k] = (1/L) sum over m = -(p-1)..p-1 of w^(-t m^2 mod p) exp(-2 pi i m k / L)
    std::vector<Complex> H(L);
    for (int k = 0; k < L; ++k) {
        Fixed re, im;
        for (int m = -(p - 1); m <= p - 1; ++m) {
            const int64_t e = (static_cast<int64_t>(p) - (static_cast<int64_t>(half) * m * m) % p) % p;
            const Complex prod = rootOfUnity(e, p, opt.sign) * rootOfUnity(static_cast<int64_t>(m) * k, L, -1);
            re = re + prod.re.exact;
            im = im + prod.im.exact;
        }
        H[k] = Complex::of(re.divInt(L), im.divInt(L));
    }
    const Batch z = transform(g, *plan.second, Y, backward, [&H](int, int k) { return H[k]; });
    Batch out(count);
    for (int t = 0; t < count; ++t) {
        const Signal head(z[t].begin(), z[t].begin() + p);
        out[t] = g.scale(head, [&chirp](int k) { return chirp[k]; });
    }
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

}  // namespace

Batch transform(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre) {
    const bool composite = plan.kind == Plan::Kind::CooleyTukey || plan.kind == Plan::Kind::GoodThomas ||
                           plan.kind == Plan::Kind::Rader || plan.kind == Plan::Kind::Bluestein;
    if (composite && !g.inLane() && (in.size() % g.width() == 0 || in.size() % g.width() == 3))
        return inLane(g, plan, in, opt, pre);
    switch (plan.kind) {
        case Plan::Kind::CooleyTukey: return cooleyTukey(g, plan, in, opt, pre);
        case Plan::Kind::GoodThomas: return goodThomas(g, plan, in, opt, pre);
        case Plan::Kind::Rader:
            return opt.deferredRotation ? raderDeferred(g, plan, in, opt, pre) : rader(g, plan, in, opt, pre);
        case Plan::Kind::Bluestein: return bluestein(g, plan, in, opt, pre);
        default: return g.lanewise(in, kernelOf(plan, opt), pre);
    }
}

void buildDft(Graph& g, const Plan& plan, const DftOptions& opt) {
    Signal x(plan.n);
    for (int k = 0; k < plan.n; ++k) x[k] = Ref::memory(k);
    const Batch out = transform(g, plan, Batch{x}, opt);
    g.setOutputs(out[0]);
}

}  // namespace gen
