// The straight-line kernels of the DCT-IV engine: R(L) for the leaves of
// stage 1 (L = 2 .. 64), the radix steps (2 .. 32) and Y(2d) of stage 2
// (d = 2 .. 32).  The engine's hand-written loops walk the memory and hand
// each kernel its inputs and take its outputs through numbered slots;
// every value is a V, a vector of lanes, one independent transform per lane
// (or a scalar, for the direct lengths that use R(16)).
//
// Slots:
//   Leaf<T, L>    in: point t at t + L/2; out: Z(k) at 2k (real), 2k + 1
//   Radix<T, R>   in: z[b] at 2b, 2b + 1; up to R = 8 the twiddle of z[b]
//                 (cosine, sine) at 2R + 2(b - 1), + 1; from 16, R = 4P,
//                 the P-point level's twiddle of b2 = 1 .. P-1, as each of
//                 the four P-point transforms b1 uses it, at
//                 2R + 8(b2 - 1) + 2 b1 (one value, read by each apart, so
//                 that the four transforms stay independent), and the
//                 4-point level's of group g and b1 = 1 .. 3 at
//                 2R + 8(P - 1) + 6g + 2(b1 - 1);
//                 out: D[w] at 2w, 2w + 1 (up to 8), D_g[w] at 2(4g + w)
//   Output<T, D>  in: row r's real part, imaginary part, cosine, sine at
//                 4r .. 4r + 3; out: Y(2D) output v at v + D
#include "families/dct4_kernels.h"

#include <sstream>
#include <string>

#include "algorithms/dct4.h"
#include "emit/emit.h"

namespace gen {

namespace {

struct Kernel {
    Graph graph{1, Domain::Real};
    PairArithmetic c{graph};

    int input(int slot) { return graph.input({slot, -1, -1, -1}); }
    int complexInput(int slot) { return c.make(input(slot), input(slot + 1)); }
    void setOutputs(const std::vector<int>& reals) {
        Signal out;
        for (int v : reals) out.push_back({v, 0});
        graph.setOutputs(out);
    }
    std::vector<int> parts(const std::vector<int>& values) {
        std::vector<int> reals;
        for (int v : values) {
            reals.push_back(c.re(v));
            reals.push_back(c.im(v));
        }
        return reals;
    }
};

void leaf(Kernel& k, int L) {
    std::vector<int> points;
    for (int t = 0; t < L; ++t) points.push_back(k.input(t));
    k.setOutputs(k.parts(dct4RealTransform(k.c, L, points)));
}

void radix(Kernel& k, int R) {
    std::vector<int> z;
    for (int b = 0; b < R; ++b) z.push_back(k.complexInput(2 * b));
    auto twiddled = [&](int value, int slot) { return dct4Rotate(k.c, k.graph, value, k.input(slot), k.input(slot + 1)); };
    if (R <= 8) {
        for (int b = 1; b < R; ++b) z[b] = twiddled(z[b], 2 * R + 2 * (b - 1));
        k.setOutputs(k.parts(dct4Dft(k.c, R, true, z)));
        return;
    }
    const int P = R / 4;
    std::vector<std::vector<int>> F(4);
    for (int b1 = 0; b1 < 4; ++b1) {
        std::vector<int> v(P);
        for (int b2 = 0; b2 < P; ++b2) v[b2] = b2 ? twiddled(z[4 * b2 + b1], 2 * R + 8 * (b2 - 1) + 2 * b1) : z[b1];
        F[b1] = dct4Dft(k.c, P, false, v);
    }
    std::vector<int> D;
    for (int g = 0; g < P; ++g) {
        std::vector<int> v(4);
        for (int b1 = 0; b1 < 4; ++b1)
            v[b1] = b1 ? twiddled(F[b1][g], 2 * R + 8 * (P - 1) + 6 * g + 2 * (b1 - 1)) : F[0][g];
        for (int d : dct4Dft(k.c, 4, true, v)) D.push_back(d);
    }
    k.setOutputs(k.parts(D));
}

// The rotations and the first stage of Y(2D) are written group by group
// before the sub-transforms; cut at its middle level instead, Y(64) kept 97
// values live at once and made a third more stack accesses.
void output(Kernel& k, int D) {
    std::vector<int> W;
    for (int r = 0; r < D; ++r) W.push_back(dct4Rotate(k.c, k.graph, k.complexInput(4 * r), k.input(4 * r + 2), k.input(4 * r + 3)));
    k.setOutputs(dct4RealOutput(k.c, 2 * D, D == 32, W, [&] { k.graph.beginStage(); }));
}

std::string kernelText(const char* kind, int size, bool single, void (*build)(Kernel&, int)) {
    Kernel k;
    build(k, size);
    const char* type = single ? "float" : "double";
    std::ostringstream s;
    s << "\ntemplate <>\nstruct " << kind << "<" << type << ", " << size << "> {\n"
      << "    template <class V, class In, class Out>\n    [[gnu::always_inline]] static void run(In&& in, Out&& out) {\n";
    std::istringstream body(emitLanes(k.graph, single));
    for (std::string line; std::getline(body, line);) s << "    " << line << '\n';
    s << "    }\n};\n";
    return s.str();
}

}  // namespace

void writeDct4Kernels(Output& out) {
    std::ostringstream s;
    s << kGeneratedBanner << "// The straight-line kernels of the DCT-IV engine; slots as in gen/families/dct4_kernels.cpp.\n"
      << "#pragma once\n\nnamespace tvk::dct4 {\n\n"
      << "template <class T, int L>\nstruct Leaf;\ntemplate <class T, int R>\nstruct Radix;\n"
      << "template <class T, int D>\nstruct Output;\n";
    for (bool single : {true, false}) {
        for (int L = 2; L <= 64; L *= 2) s << kernelText("Leaf", L, single, leaf);
        for (int R = 2; R <= 32; R *= 2) s << kernelText("Radix", R, single, radix);
        for (int D = 2; D <= 32; D *= 2) s << kernelText("Output", D, single, output);
    }
    s << "\n}  // namespace tvk::dct4\n";
    out.write("src/dct4/kernels_generated.h", s.str());
}

}  // namespace gen
