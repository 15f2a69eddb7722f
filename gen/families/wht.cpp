// The Walsh-Hadamard family.  Orders 1 to 7 are one straight line each; orders
// 8 to 13 are loops over straight-line kernels through a work buffer: a block
// kernel (the low stages, from the source into the buffer) and row kernels
// (the higher stages, one vector per row, with the scale in the final pass).
// Every kernel is written with butterflies in stage order, so each value sees
// exactly the additions and subtractions of the plain in-order sequence.
#include "families/wht.h"

#include <cmath>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "families/entry.h"
#include "ir/exact.h"

namespace gen {

namespace {

struct Type {
    bool single;
    std::string suffix() const { return single ? "32f" : "64f"; }
    std::string elem() const { return single ? "tvk32f" : "tvk64f"; }
    std::string vec() const { return single ? "__m128" : "__m128d"; }
    int width() const { return single ? 4 : 8; }
    int lanes() const { return single ? 4 : 2; }
    std::string aligned() const { return single ? "tvk::Aligned32" : "tvk::Aligned64"; }
    std::string unaligned() const { return single ? "tvk::Unaligned32" : "tvk::Unaligned64"; }
    std::string splat() const { return single ? "_mm_set1_ps" : "_mm_set1_pd"; }
    std::string mul() const { return single ? "_mm_mul_ps" : "_mm_mul_pd"; }
    // Lowest order written with vectors.
    int firstVectorOrder() const { return single ? 4 : 3; }
};

Shape shapeOf(int m, const Type& t) {
    if (m < t.firstVectorOrder()) return Shape::SinglePath;
    if (m == 7 || m >= 9 || (!t.single && m == 6)) return Shape::Twinned;
    return Shape::TwoPath;
}

// The pass plan of a buffered order; chunk 0 means two passes.
struct Plan {
    int block, chunk;
};

Plan planOf(int m, const Type& t) {
    if (t.single) {
        if (m == 8) return {32, 0};
        return {64, m >= 12 ? 512 : 0};
    }
    switch (m) {
        case 8: case 9: return {32, 0};
        case 10: return {128, 0};
        case 11: case 12: return {32, 256};
        default: return {128, 1024};
    }
}

int log2Of(int n) { return static_cast<int>(std::lround(std::log2(n))); }

std::string v(int i) { return "v" + std::to_string(i); }

// Writes the butterflies of a straight line over `count` values in an order
// that keeps at most a group of them live at a time: the stages below the
// group size run group by group, the stages above run on every residue of
// the group separately, recursively.  A group is 8 values, but a vector
// straight line of up to 16 vectors (the 64-element blocks of tvk32f, the
// 32-element ones of tvk64f) is one group: g++ allocates such a block better
// whole than as two halves, the first waiting while the second runs (the
// orders built on those blocks run 3 to 9% faster).  Each value still takes
// the stages in ascending order and meets the same partners at the same
// depth.  Values are loaded on first use; on the last stages, once every load
// is done, each residue is stored as soon as it is final.
class StageWriter {
public:
    using Emit = std::function<std::string(int)>;
    // `lanes` > 1: stages within a vector are done by shuffles right after
    // its group is loaded (stages 0 and 1 of tvk32f, stage 0 of tvk64f).
    StageWriter(std::ostream& s, int lanes, Emit load, Emit store)
        : s_(s), lanes_(lanes), load_(std::move(load)), store_(std::move(store)) {}

    void write(int count) {
        group_ = lanes_ > 1 && count <= 16 ? count : 8;
        stages(0, 1, count, true, true);
        if (count <= group_)
            for (int i = 0; i < count; ++i) s_ << store_(i);
    }

private:
    void stages(int base, int stride, int count, bool fresh, bool last) {
        if (count <= group_) {
            if (fresh) {
                for (int i = 0; i < count; ++i) s_ << load_(base + i);
                laneStages(base, count);
            }
            for (int d = 1; d < count; d *= 2)
                for (int k = 0; k < count; ++k)
                    if (!(k & d)) butterfly(base + k * stride, base + (k + d) * stride);
            return;
        }
        for (int g = 0; g < count; g += group_) stages(base + g * stride, stride, group_, fresh, false);
        for (int i = 0; i < group_; ++i) {
            stages(base + i * stride, stride * group_, count / group_, false, false);
            if (last)
                for (int k = 0; k < count / group_; ++k) s_ << store_(base + (i + k * group_) * stride);
        }
    }

    void butterfly(int a, int b) { s_ << "    tvk::butterfly(" << v(a) << ", " << v(b) << ");\n"; }

    void laneStages(int base, int count) {
        if (lanes_ == 4) {
            for (int g = base; g < base + count; g += 4) {
                const std::string q = v(g) + ", " + v(g + 1) + ", " + v(g + 2) + ", " + v(g + 3);
                s_ << "    _MM_TRANSPOSE4_PS(" << q << ");\n";
                butterfly(g, g + 1);
                butterfly(g + 2, g + 3);
                butterfly(g, g + 2);
                butterfly(g + 1, g + 3);
                s_ << "    _MM_TRANSPOSE4_PS(" << q << ");\n";
            }
        } else if (lanes_ == 2) {
            for (int g = base; g < base + count; g += 2) {
                s_ << "    tvk::exchange(" << v(g) << ", " << v(g + 1) << ");\n";
                butterfly(g, g + 1);
                s_ << "    tvk::exchange(" << v(g) << ", " << v(g + 1) << ");\n";
            }
        }
    }

    std::ostream& s_;
    int lanes_, group_ = 8;
    Emit load_, store_;
};

// The whole transform of 2^m elements in one straight line:
//   template <class In, class Out> void name(const T* src, T* dst[, T s])
// With `scaled` every output is multiplied by s just before its store.
std::string straightLine(const std::string& name, int m, const Type& t, bool scaled) {
    const int lanes = t.lanes();
    std::ostringstream s;
    s << "template <class In, class Out>\nTVK_BODY void " << name << "(const " << t.elem() << "* src, " << t.elem()
      << "* dst" << (scaled ? ", " + t.elem() + " s" : "") << ") {\n";
    if (scaled) s << "    const " << t.vec() << " scale = " << t.splat() << "(s);\n";
    StageWriter(
        s, lanes,
        [&](int i) { return "    " + t.vec() + " " + v(i) + " = In::load(src + " + std::to_string(i * lanes) + ");\n"; },
        [&](int i) {
            return "    Out::store(dst + " + std::to_string(i * lanes) + ", " +
                   (scaled ? t.mul() + "(" + v(i) + ", scale)" : v(i)) + ");\n";
        })
        .write((1 << m) / lanes);
    s << "}\n";
    return s.str();
}

std::string scalarBody(int m, const Type& t) {
    std::ostringstream s;
    s << "TVK_BODY void body(const " << t.elem() << "* src, " << t.elem() << "* dst, " << t.elem() << " s) {\n";
    StageWriter(
        s, 1,
        [&](int i) { return "    " + t.elem() + " " + v(i) + " = tvk::load<" + t.elem() + ">(src, " + std::to_string(i) + ");\n"; },
        [&](int i) { return "    tvk::store(dst, " + std::to_string(i) + ", " + v(i) + " * s);\n"; })
        .write(1 << m);
    s << "}\n";
    return s.str();
}

// One vector from each of `rows` rows `stride` elements apart, the stages
// between the rows, row bit 0 first, and the store at the same positions.
// The buffer side is always aligned; the final pass's stores use Out.
std::string rowKernel(int rows, const Type& t, bool final) {
    std::ostringstream s;
    const std::string name = (final ? "finalRows" : "middleRows") + std::to_string(rows);
    if (final) s << "template <class Out>\n";
    s << "TVK_BODY void " << name << "(const " << t.elem() << "* in, " << t.elem() << "* out, int stride"
      << (final ? ", " + t.vec() + " scale" : "") << ") {\n";
    const std::string target = final ? "Out" : t.aligned();
    StageWriter(
        s, 1,
        [&](int r) {
            return "    " + t.vec() + " " + v(r) + " = " + t.aligned() + "::load(in + " + std::to_string(r) +
                   " * stride);\n";
        },
        [&](int r) {
            return "    " + target + "::store(out + " + std::to_string(r) + " * stride, " +
                   (final ? t.mul() + "(" + v(r) + ", scale)" : v(r)) + ");\n";
        })
        .write(rows);
    s << "}\n";
    return s.str();
}

// The passes of a buffered order, loops of constant counts around the kernels.
std::string passes(int m, const Type& t, const Plan& p) {
    const int n = 1 << m, lanes = t.lanes();
    const int rowLength = p.chunk ? p.chunk : p.block;
    std::ostringstream s;
    s << straightLine("block", log2Of(p.block), t, false);
    if (p.chunk) s << rowKernel(p.chunk / p.block, t, false);
    s << rowKernel(n / rowLength, t, true);
    s << "template <class In, class Out>\nTVK_BODY void passes(const " << t.elem() << "* src, " << t.elem()
      << "* dst, " << t.elem() << "* buffer, " << t.elem() << " s) {\n";
    if (p.chunk) {
        // Blocks into the chunk scratch behind the main image, then the
        // middle stages from there into the chunk's place in the image.
        s << "    " << t.elem() << "* const scratch = buffer + " << n << ";\n"
          << "    for (int i = 0; i < " << n << "; i += " << p.chunk << ") {\n"
          << "        for (int j = 0; j < " << p.chunk << "; j += " << p.block
          << ") block<In, " << t.aligned() << ">(src + i + j, scratch + j);\n"
          << "        for (int c = 0; c < " << p.block << "; c += " << lanes << ") middleRows"
          << p.chunk / p.block << "(scratch + c, buffer + i + c, " << p.block << ");\n"
          << "    }\n";
    } else {
        s << "    for (int j = 0; j < " << n << "; j += " << p.block << ") block<In, " << t.aligned()
          << ">(src + j, buffer + j);\n";
    }
    s << "    const " << t.vec() << " scale = " << t.splat() << "(s);\n"
      << "    for (int c = 0; c < " << rowLength << "; c += " << lanes << ") finalRows" << n / rowLength
      << "<Out>(buffer + c, dst + c, " << rowLength << ", scale);\n}\n";
    return s.str();
}

int bufferBytes(int m, const Type& t) {
    if (m <= 7) return 0;
    const Plan p = planOf(m, t);
    return ((1 << m) + p.chunk) * t.width();
}

std::string codelet(int m, const Type& t) {
    const std::string name = "tvkgWHT_" + std::to_string(m) + "_" + t.suffix();
    const std::string ns = "wht_" + std::to_string(m) + "_" + t.suffix();
    const bool buffered = m >= 8;
    auto run = [&](const std::string& memory) {
        if (buffered)
            return "tvk::runBuffered<" + ns + "::passes<" + memory + ", " + memory + ">, " +
                   std::to_string(bufferBytes(m, t)) + ">(src, dst, flag, buffer, " + ns + "::kScales)";
        const std::string body = memory.empty() ? ns + "::body" : ns + "::body<" + memory + ", " + memory + ">";
        return "tvk::run<tvk::SelfInverse, " + body + ">(src, dst, flag, " + ns + "::kScales)";
    };

    std::ostringstream s;
    s << "\n// " << name;
    if (buffered) {
        const Plan p = planOf(m, t);
        s << ": blocks of " << p.block;
        if (p.chunk) s << " in chunks of " << p.chunk;
        s << ", " << bufferBytes(m, t) << " bytes of buffer";
    }
    s << "\nnamespace " << ns << " {\n" << scalesOf(1 << m, t.single);
    if (buffered) s << passes(m, t, planOf(m, t));
    else if (shapeOf(m, t) == Shape::SinglePath) s << scalarBody(m, t);
    else s << straightLine("body", m, t, true);
    s << "}  // namespace " << ns << "\n";
    Entry entry;
    entry.name = name;
    entry.params = "(const " + t.elem() + "* src, " + t.elem() + "* dst, int32_t flag, uint8_t* buffer)";
    entry.arguments = "src, dst, flag, buffer";
    // Orders 1 to 7 never look at the buffer.
    entry.prelude = buffered ? "" : "    (void)buffer;\n";
    entry.shape = shapeOf(m, t);
    entry.aligned = t.aligned();
    entry.unaligned = t.unaligned();
    entry.run = run;
    s << entryPoints(entry);
    return s.str();
}

}  // namespace

void writeWalshHadamard(Output& out, int shards) {
    for (const bool single : {true, false}) {
        const Type t{single};
        std::vector<std::ostringstream> files(shards);
        // Deal the orders out from the longest so that the buffered ones spread.
        for (int m = 13; m >= 1; --m) files[(13 - m) % shards] << codelet(m, t);
        for (int i = 0; i < shards; ++i)
            out.write("src/wht/pgenwht" + t.suffix() + "w7cn_" + std::to_string(i) + ".cpp",
                      std::string(kGeneratedBanner) + "#include \"wht/wht.h\"\n" + files[i].str());
    }
}

}  // namespace gen
