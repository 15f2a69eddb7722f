// Properties of the built library as a whole: the version record, the
// exported names, the instruction set of its code and the operation counts
// that the generator reports for each Codelet.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tvkgen.h"

namespace {

std::vector<std::string> commandOutputLines(const std::string& command) {
    std::vector<std::string> lines;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return lines;
    std::string line;
    char buf[4096];
    while (fgets(buf, sizeof buf, pipe)) {
        line += buf;
        if (!line.empty() && line.back() == '\n') {
            line.pop_back();
            lines.push_back(std::move(line));
            line.clear();
        }
    }
    EXPECT_EQ(pclose(pipe), 0) << command;
    return lines;
}

std::vector<std::string> fileLines(const std::string& path) {
    std::ifstream in(path);
    EXPECT_TRUE(in) << path;
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        if (!line.empty()) lines.push_back(line);
    return lines;
}

// ---- version record ---------------------------------------------------------

TEST(Version, RecordIsOneConstantObject) {
    const tvkLibraryVersion* v = tvkgenGetLibVersion();
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v, tvkgenGetLibVersion());
    EXPECT_EQ(v->major, 8);
    EXPECT_EQ(v->minor, 2);
    EXPECT_EQ(v->patch, 1);
    EXPECT_EQ(v->revision, 44077);
    EXPECT_EQ(0, std::memcmp(v->target, "u8\0\0", 4));
    EXPECT_STREQ(v->name, "tvkGEN SSSE3 (u8)");
    EXPECT_STREQ(v->version, "8.2.1 (r44077)");
    EXPECT_STREQ(v->buildDate, "Oct  9 2014");
}

// ---- exported names ------------------------------------------------------------

constexpr size_t kAllExports = 1193;

TEST(Exports, DynamicSymbolsAreExactlyTheBuiltPublicNames) {
    std::set<std::string> exported;
    for (const auto& line : commandOutputLines(std::string("nm -D --defined-only ") + TVKTEST_LIBRARY)) {
        std::istringstream fields(line);
        std::string address, type, name;
        if (!(fields >> address >> type >> name)) continue;
        exported.insert(name.substr(0, name.find('@')));
    }
    const auto allLines = fileLines(TVKTEST_EXPORTS_ALL);
    const auto builtLines = fileLines(TVKTEST_EXPORTS_BUILT);
    const std::set<std::string> all(allLines.begin(), allLines.end()), built(builtLines.begin(), builtLines.end());
    EXPECT_EQ(all.size(), kAllExports);
    for (const auto& name : exported) {
        EXPECT_TRUE(all.count(name)) << name << " is exported but is no public name";
        EXPECT_FALSE(name.starts_with("u8_") || name.find("owng") != std::string::npos || name.starts_with("_Z"))
            << "internal name visible: " << name;
    }
    for (const auto& name : built) EXPECT_TRUE(exported.count(name)) << name << " is built but not exported";
    EXPECT_EQ(exported.size(), built.size());
    if (builtLines.size() == kAllExports) {
        EXPECT_EQ(exported.size(), kAllExports);
    }
}

// ---- instruction set -----------------------------------------------------------

// Mnemonics of SSSE3, SSE4, AES/CLMUL, BMI and later that a processor with
// SSE3 as its newest extension can't run.
const std::set<std::string>& newerThanSse3() {
    static const std::set<std::string> names = {
        "pshufb",    "palignr",  "phaddw",  "phaddd",     "phaddsw",  "phsubw",    "phsubd",    "phsubsw",
        "pmaddubsw", "pmulhrsw", "psignb",  "psignw",     "psignd",   "pabsb",     "pabsw",     "pabsd",
        "pblendw",   "pblendvb", "blendps", "blendpd",    "blendvps", "blendvpd",  "ptest",     "roundps",
        "roundpd",   "roundss",  "roundsd", "dpps",       "dppd",     "pmulld",    "pmuldq",    "insertps",
        "extractps", "pextrb",   "pextrd",  "pextrq",     "pinsrb",   "pinsrd",    "pinsrq",    "pminsb",
        "pminsd",    "pminuw",   "pminud",  "pmaxsb",     "pmaxsd",   "pmaxuw",    "pmaxud",    "packusdw",
        "pcmpeqq",   "pcmpgtq",  "mpsadbw", "phminposuw", "movntdqa", "pcmpestri", "pcmpestrm", "pcmpistri",
        "pcmpistrm", "crc32",    "popcnt",  "aesenc",     "aesdec",   "pclmulqdq", "andn",      "bextr",
        "blsi",      "blsr",     "blsmsk",  "bzhi",       "pdep",     "pext",      "rorx",      "sarx",
        "shlx",      "shrx",     "lzcnt",   "tzcnt",      "movbe"};
    return names;
}

TEST(InstructionSet, NothingNewerThanSse3AndNoVex) {
    size_t scanned = 0;
    std::map<std::string, int> rejected;
    for (const auto& line : commandOutputLines(std::string("objdump -d --no-show-raw-insn ") + TVKTEST_LIBRARY)) {
        const auto tab = line.find('\t');
        if (tab == std::string::npos || line.find(':') > tab) continue;
        std::istringstream rest(line.substr(tab + 1));
        std::string mnemonic;
        if (!(rest >> mnemonic)) continue;
        ++scanned;
        const bool vex = mnemonic[0] == 'v' && mnemonic != "verr" && mnemonic != "verw";
        const bool newer = newerThanSse3().count(mnemonic) || mnemonic.starts_with("pmovsx") ||
                           mnemonic.starts_with("pmovzx") || mnemonic.starts_with("aes") ||
                           line.find("%ymm") != std::string::npos || line.find("%zmm") != std::string::npos;
        if (vex || newer) ++rejected[mnemonic];
    }
    EXPECT_GT(scanned, 1000u) << "objdump gave no code";
    for (const auto& [mnemonic, count] : rejected) ADD_FAILURE() << mnemonic << " used " << count << " times";
}

// The instructions of the library's functions whose heading matches
// `functions`, as (function, mnemonic) of those that `flagged` picks out
// from mnemonic and operands, counted; `matched` is the number of functions.
std::map<std::string, int> flaggedInstructions(const std::regex& functions,
                                               bool (*flagged)(const std::string&, const std::string&),
                                               size_t& matched) {
    std::string function;
    std::map<std::string, int> found;
    matched = 0;
    for (const auto& line : commandOutputLines(std::string("objdump -d --no-show-raw-insn ") + TVKTEST_LIBRARY)) {
        if (line.empty() || line[0] != ' ') {
            function = std::regex_search(line, functions) ? line : "";
            matched += !function.empty();
            continue;
        }
        const auto tab = line.find('\t');
        if (function.empty() || tab == std::string::npos) continue;
        std::istringstream rest(line.substr(tab + 1));
        std::string mnemonic, operands;
        rest >> mnemonic >> operands;
        if (flagged(mnemonic, operands)) ++found[function + " " + mnemonic];
    }
    return found;
}

// The real DFT and Hartley bodies, and the scalar orders and lengths of the
// other families, are scalar code on single elements: no packed arithmetic
// and no shuffles to gather packs.  g++'s vectorizer used to pack pairs of
// their operations (mulps, unpcklps) in 503 of the 882 real and Hartley ones.
TEST(InstructionSet, ScalarBodiesHaveNoPackedArithmetic) {
    const std::regex scalarBody(
        R"(^[0-9a-f]+ <u8_tvkg(DFTFwd_RTo|DFTInv_(CCS|Pack|Perm)ToR_|Hartley_|DFT(Fwd|Inv)_CToC_[2-5]_32fc>|)"
        R"(WHT_[1-3]_32f>|WHT_[12]_64f>))");
    size_t bodies = 0;
    const auto found = flaggedInstructions(
        scalarBody,
        [](const std::string& mnemonic, const std::string&) {
            static const std::regex packed(
                R"(^((add|sub|mul|div|min|max|sqrt|hadd|hsub|addsub)p[sd]|unpck[lh]p[sd]|shufp[sd]|movlhps|movhlps|)"
                R"(cvtps2pd|cvtpd2ps|movddup|movsldup|movshdup)$)");
            return std::regex_match(mnemonic, packed);
        },
        bodies);
    // Real: 2 directions, 3 layouts, 2 types, 63 lengths; Hartley: 2 types;
    // their 14 length switches; tvk32fc 2 to 5 both ways; 5 scalar orders.
    EXPECT_EQ(bodies, 12u * 63 + 2u * 63 + 14u + 8u + 5u) << "not every scalar body was found";
    for (const auto& [where, count] : found) ADD_FAILURE() << where << " used " << count << " times";
}

// The DCT-IV engine touches the caller's arrays only element by element; its
// scratch and tables it reads and writes with aligned vector accesses.  So
// an unaligned 16-byte access anywhere but its own stack frame is one to a
// caller's array (g++ had merged pairs of element reads into such loads in
// the direct kernels and the leaves, and pairs of stores in the outputs).
TEST(InstructionSet, Dct4TouchesCallerArraysElementByElement) {
    size_t functions = 0;
    const auto found = flaggedInstructions(
        std::regex(R"(^[0-9a-f]+ <(_ZN3tvk4dct4|u8_tvkgDCT4|u8_owngDCT4))"),
        [](const std::string& mnemonic, const std::string& operands) {
            static const std::regex wide(R"(^(movups|movupd|movdqu|lddqu)$)");
            return std::regex_match(mnemonic, wide) && operands.find('(') != std::string::npos &&
                   operands.find("(%rsp)") == std::string::npos;
        },
        functions);
    EXPECT_GT(functions, 50u) << "objdump gave no DCT-IV code";
    for (const auto& [where, count] : found) ADD_FAILURE() << where << " used " << count << " times";
}

// The instructions of a function of the library, and how many touch the stack.
std::pair<size_t, size_t> instructionsAndStackAccesses(const std::string& function) {
    size_t instructions = 0, stack = 0;
    for (const auto& line :
         commandOutputLines("objdump -d --no-show-raw-insn --disassemble=" + function + " " + TVKTEST_LIBRARY)) {
        const auto tab = line.find('\t');
        if (tab == std::string::npos || line.find(':') > tab) continue;
        ++instructions;
        stack += line.find("(%rsp)") != std::string::npos || line.find("(%rbp)") != std::string::npos;
    }
    return {instructions, stack};
}

// The long split-radix bodies hold 64 and 32 complex values in 16 registers.
// Scheduled one sub-transform at a time they spill what crosses each cut;
// written stage by stage (the generator's creation order) a third of their
// instructions were stack accesses.
TEST(Schedule, LongBodiesSpillLittle) {
    for (const char* body : {"u8_tvkgDFTFwd_CToC_64_64fc", "u8_tvkgDFTInv_CToC_32_64fc"}) {
        const auto [instructions, stack] = instructionsAndStackAccesses(body);
        ASSERT_GT(instructions, 500u) << body << ": objdump gave no code";
        EXPECT_LT(stack * 5, instructions) << body << ": " << stack << " stack accesses in " << instructions;
    }
}

// The largest DCT-IV kernel, Y(64) with its rotations, writes its first stage
// group by group before its four sub-transforms.  Cut at the middle level
// instead, it held 97 values live at once and 27% of its instructions were
// stack accesses.
TEST(Schedule, LargestDct4KernelSpillsLittle) {
    for (const char* kernel : {"_ZN3tvk4dct412outputKernelIdLi32EEEvPKT_PS2_S4_li",
                               "_ZN3tvk4dct412outputKernelIfLi32EEEvPKT_PS2_S4_li"}) {
        const auto [instructions, stack] = instructionsAndStackAccesses(kernel);
        ASSERT_GT(instructions, 1000u) << kernel << ": objdump gave no code";
        EXPECT_LT(stack * 4, instructions) << kernel << ": " << stack << " stack accesses in " << instructions;
    }
}

// The stack a body uses, in bytes: what it subtracts from %rsp plus the part
// of the red zone below %rsp that it touches.
size_t stackBytes(const std::string& body) {
    long frame = 0, below = 0;
    size_t instructions = 0;
    const std::regex subtract(R"(sub\s+\$0x([0-9a-f]+),%rsp)"), access(R"((-?)0x([0-9a-f]+)\(%rsp\))");
    for (const auto& line : commandOutputLines("objdump -d --no-show-raw-insn --disassemble=" + body + " " +
                                               TVKTEST_LIBRARY)) {
        const auto tab = line.find('\t');
        if (tab == std::string::npos || line.find(':') > tab) continue;
        ++instructions;
        std::smatch m;
        if (std::regex_search(line, m, subtract)) frame = std::max(frame, std::stol(m[1].str(), nullptr, 16));
        if (std::regex_search(line, m, access) && m[1].str() == "-")
            below = std::max(below, std::stol(m[2].str(), nullptr, 16));
    }
    EXPECT_GT(instructions, 100u) << body << ": objdump gave no code";
    return static_cast<size_t>(frame + below);
}

// The longest scalar bodies, the nested Rader forms of 47 and 59 and the
// Rader form of 61, keep their intermediate values in a little over 1 KB of
// stack at most.
TEST(Schedule, LongScalarBodiesUseLittleStack) {
    for (const char* stem : {"u8_tvkgDFTFwd_RToCCS_", "u8_tvkgDFTInv_CCSToR_", "u8_tvkgHartley_"})
        for (const char* length : {"47", "59", "61"})
            for (const char* type : {"_32f", "_64f"}) {
                const std::string body = std::string(stem) + length + type;
                const size_t bytes = stackBytes(body);
                EXPECT_LE(bytes, 1152u) << body;
                std::printf("%s: %zu bytes of stack\n", body.c_str(), bytes);
            }
}

// ---- operation counts ------------------------------------------------------------

struct Count {
    const char* type;
    int n;
    int additions;
    int multiplications;  // including the 2N of the scale
};

// Tiny lengths list their multiplications without the scale, as do the
// split-radix bodies; the helpers add the 2N.
constexpr Count tiny(const char* type, int n, int adds, int mulsWithoutScale) {
    return {type, n, adds, mulsWithoutScale + 2 * n};
}
constexpr Count splitRadix(int n, int adds, int mulsWithoutScale) {
    return {"64fc", n, adds, mulsWithoutScale + 2 * n};
}

const Count kExpectedCounts[] = {
    tiny("32fc", 2, 4, 0),
    tiny("32fc", 3, 12, 4),
    tiny("32fc", 4, 16, 0),
    tiny("32fc", 5, 32, 16),
    tiny("64fc", 2, 4, 0),
    tiny("64fc", 3, 12, 4),
    tiny("64fc", 4, 16, 0),
    tiny("64fc", 5, 32, 16),
    // prime lengths
    {"32fc", 7, 90, 59},
    {"64fc", 7, 60, 50},
    {"32fc", 11, 198, 131},
    {"64fc", 11, 140, 122},
    {"32fc", 13, 226, 111},
    {"64fc", 13, 180, 108},
    {"32fc", 17, 346, 199},
    {"64fc", 17, 268, 146},
    {"32fc", 19, 454, 315},
    {"64fc", 19, 364, 254},
    {"32fc", 23, 698, 539},
    {"64fc", 23, 644, 530},
    {"32fc", 29, 770, 463},
    {"64fc", 29, 668, 478},
    {"32fc", 31, 814, 459},
    {"64fc", 31, 692, 446},
    {"32fc", 37, 1010, 543},
    {"64fc", 37, 896, 586},
    {"32fc", 41, 1202, 751},
    {"64fc", 41, 976, 534},
    {"32fc", 43, 1318, 803},
    {"64fc", 43, 1172, 840},
    {"32fc", 47, 3222, 1840},
    {"64fc", 47, 2676, 2210},
    {"32fc", 53, 1938, 911},
    {"64fc", 53, 1816, 1082},
    {"32fc", 59, 4496, 2569},
    {"64fc", 59, 2820, 2074},
    {"32fc", 61, 2082, 1359},
    {"64fc", 61, 1644, 956},
    // composite lengths
    {"32fc", 8, 56, 32},
    {"32fc", 16, 152, 80},
    {"32fc", 32, 392, 192},
    {"32fc", 64, 944, 413},
    splitRadix(8, 52, 4),
    splitRadix(16, 144, 24),
    splitRadix(32, 376, 88),
    splitRadix(64, 920, 264),
    {"32fc", 24, 280, 160},
    {"64fc", 24, 252, 92},
    {"32fc", 48, 664, 336},
    {"64fc", 48, 624, 232},
    {"32fc", 60, 976, 616},
    {"64fc", 60, 864, 376},
    {"32fc", 25, 360, 292},
    {"64fc", 25, 352, 274},
    {"32fc", 27, 384, 284},
    {"64fc", 27, 380, 274},
    {"32fc", 49, 924, 776},
    {"64fc", 49, 912, 746},
};

// Counts that the generator does not reach exactly: tvk64fc Rader lengths come
// within a few percent of the table (their half-spectrum networks are grouped
// differently), split radix 32 and 64 group their rotations differently, and
// tvk32fc counts every lane of a vector, spare ones included.  The test fails
// when an entry here starts to match, so that the list only ever shrinks.
const std::set<std::string> kKnownMismatches = {
    "tvkgDFTFwd_CToC_7_32fc", "tvkgDFTInv_CToC_7_32fc",
    "tvkgDFTFwd_CToC_11_32fc", "tvkgDFTInv_CToC_11_32fc",
    "tvkgDFTFwd_CToC_13_32fc", "tvkgDFTInv_CToC_13_32fc",
    "tvkgDFTFwd_CToC_13_64fc", "tvkgDFTInv_CToC_13_64fc",
    "tvkgDFTFwd_CToC_17_32fc", "tvkgDFTInv_CToC_17_32fc",
    "tvkgDFTFwd_CToC_17_64fc", "tvkgDFTInv_CToC_17_64fc",
    "tvkgDFTFwd_CToC_19_32fc", "tvkgDFTInv_CToC_19_32fc",
    "tvkgDFTFwd_CToC_19_64fc", "tvkgDFTInv_CToC_19_64fc",
    "tvkgDFTFwd_CToC_23_32fc", "tvkgDFTInv_CToC_23_32fc",
    "tvkgDFTFwd_CToC_23_64fc", "tvkgDFTInv_CToC_23_64fc",
    "tvkgDFTFwd_CToC_29_32fc", "tvkgDFTInv_CToC_29_32fc",
    "tvkgDFTFwd_CToC_29_64fc", "tvkgDFTInv_CToC_29_64fc",
    "tvkgDFTFwd_CToC_31_32fc", "tvkgDFTInv_CToC_31_32fc",
    "tvkgDFTFwd_CToC_31_64fc", "tvkgDFTInv_CToC_31_64fc",
    "tvkgDFTFwd_CToC_37_32fc", "tvkgDFTInv_CToC_37_32fc",
    "tvkgDFTFwd_CToC_37_64fc", "tvkgDFTInv_CToC_37_64fc",
    "tvkgDFTFwd_CToC_41_32fc", "tvkgDFTInv_CToC_41_32fc",
    "tvkgDFTFwd_CToC_41_64fc", "tvkgDFTInv_CToC_41_64fc",
    "tvkgDFTFwd_CToC_43_32fc", "tvkgDFTInv_CToC_43_32fc",
    "tvkgDFTFwd_CToC_43_64fc", "tvkgDFTInv_CToC_43_64fc",
    "tvkgDFTFwd_CToC_47_32fc", "tvkgDFTInv_CToC_47_32fc",
    "tvkgDFTFwd_CToC_47_64fc", "tvkgDFTInv_CToC_47_64fc",
    "tvkgDFTFwd_CToC_53_32fc", "tvkgDFTInv_CToC_53_32fc",
    "tvkgDFTFwd_CToC_53_64fc", "tvkgDFTInv_CToC_53_64fc",
    "tvkgDFTFwd_CToC_59_32fc", "tvkgDFTInv_CToC_59_32fc",
    "tvkgDFTFwd_CToC_59_64fc", "tvkgDFTInv_CToC_59_64fc",
    "tvkgDFTFwd_CToC_61_32fc", "tvkgDFTInv_CToC_61_32fc",
    "tvkgDFTFwd_CToC_61_64fc", "tvkgDFTInv_CToC_61_64fc",
    "tvkgDFTFwd_CToC_8_32fc", "tvkgDFTInv_CToC_8_32fc",
    "tvkgDFTFwd_CToC_64_32fc", "tvkgDFTInv_CToC_64_32fc",
    "tvkgDFTFwd_CToC_32_64fc", "tvkgDFTInv_CToC_32_64fc",
    "tvkgDFTFwd_CToC_64_64fc", "tvkgDFTInv_CToC_64_64fc",
    "tvkgDFTFwd_CToC_24_32fc", "tvkgDFTInv_CToC_24_32fc",
    "tvkgDFTFwd_CToC_60_32fc", "tvkgDFTInv_CToC_60_32fc",
    "tvkgDFTFwd_CToC_60_64fc", "tvkgDFTInv_CToC_60_64fc",
    "tvkgDFTFwd_CToC_25_32fc", "tvkgDFTInv_CToC_25_32fc",
    "tvkgDFTFwd_CToC_27_32fc", "tvkgDFTInv_CToC_27_32fc",
    "tvkgDFTFwd_CToC_49_32fc", "tvkgDFTInv_CToC_49_32fc",
};

// Rader lengths: tvk32fc multiplies every bin by its full complex multiplier,
// tvk64fc is a real-coefficient network with the rotation by i left to the
// end, so none of its products has a constant with two nonzero parts.
TEST(OperationCounts, RaderFormsByElementType) {
    std::map<std::string, int> complexProducts;
    for (const auto& line : fileLines(TVKTEST_OPCOUNTS)) {
        std::istringstream fields(line);
        std::string name, plan;
        int adds = 0, muls = 0, complexCount = 0;
        if (fields >> name >> plan >> adds >> muls >> complexCount) complexProducts[name] = complexCount;
    }
    for (int p : {7, 11, 13, 17, 19, 23, 29, 31, 37, 41, 43, 47, 53, 59, 61})
        for (const char* dir : {"Fwd", "Inv"}) {
            const std::string stem = std::string("tvkgDFT") + dir + "_CToC_" + std::to_string(p);
            ASSERT_TRUE(complexProducts.count(stem + "_64fc")) << stem;
            if (p > 11) {
                EXPECT_EQ(complexProducts[stem + "_64fc"], 0) << stem << "_64fc";
            }
            if (p != 47 && p != 59) {
                EXPECT_GT(complexProducts[stem + "_32fc"], 0) << stem << "_32fc";
            }
        }
}

TEST(OperationCounts, MatchTheDesignTable) {
    std::map<std::string, std::pair<int, int>> counted;
    for (const auto& line : fileLines(TVKTEST_OPCOUNTS)) {
        std::istringstream fields(line);
        std::string name, plan;
        int adds = 0, muls = 0;
        if (fields >> name >> plan >> adds >> muls) counted[name] = {adds, muls};
    }
    std::set<std::string> seen;
    for (const Count& want : kExpectedCounts) {
        for (const char* dir : {"Fwd", "Inv"}) {
            const std::string name = std::string("tvkgDFT") + dir + "_CToC_" + std::to_string(want.n) + "_" + want.type;
            seen.insert(name);
            const auto it = counted.find(name);
            ASSERT_NE(it, counted.end()) << name << " missing from the counts";
            const bool matches = it->second == std::pair{want.additions, want.multiplications};
            const bool known = kKnownMismatches.count(name) > 0;
            if (!matches) {
                std::printf("%s mismatch %s: counted %d adds, %d muls; expected %d, %d\n", known ? "known" : "NEW",
                            name.c_str(), it->second.first, it->second.second, want.additions, want.multiplications);
                EXPECT_TRUE(known) << name << " no longer has its expected counts";
            } else {
                EXPECT_FALSE(known) << name << " now matches: remove it from kKnownMismatches";
            }
        }
    }
    for (const auto& name : kKnownMismatches) EXPECT_TRUE(seen.count(name)) << name << " has no expected count";
    std::printf("%zu known mismatches:", kKnownMismatches.size());
    for (const auto& name : kKnownMismatches) std::printf(" %s", name.c_str());
    std::printf("\n");
}

}  // namespace
