// The operation counts the generator reports for every real DFT Codelet,
// against the plan tables of the family: multiplications (with the scale and
// the doublings of the inverse), additions, and for tvk32f the double
// multiplications and additions, widenings and narrowings.  Where a row is
// not met, kKnownMismatches says why, and the test fails once it is met.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>

namespace {

struct Row {
    int n, multiplications, additions, doubleMultiplications, doubleAdditions, widenings, narrowings;
};

// Forward plans.
constexpr Row kForward[] = {
    {2, 2, 2, 0, 0, 0, 0},
    {3, 5, 4, 4, 1, 4, 2},
    {4, 4, 6, 0, 0, 0, 0},
    {5, 13, 12, 12, 6, 6, 4},
    {6, 10, 14, 4, 2, 6, 4},
    {7, 25, 24, 24, 15, 8, 6},
    {8, 10, 20, 2, 0, 2, 2},
    {9, 29, 32, 22, 10, 23, 16},
    {10, 26, 34, 16, 12, 10, 8},
    {11, 61, 60, 60, 45, 12, 10},
    {12, 20, 38, 12, 4, 13, 8},
    {13, 54, 78, 41, 21, 38, 29},
    {14, 50, 62, 48, 30, 15, 12},
    {15, 49, 64, 38, 23, 31, 22},
    {16, 28, 58, 12, 4, 8, 8},
    {17, 71, 116, 58, 23, 34, 32},
    {18, 58, 82, 44, 20, 45, 32},
    {19, 127, 164, 108, 59, 99, 76},
    {20, 52, 86, 32, 24, 20, 16},
    {21, 89, 112, 70, 52, 43, 32},
    {22, 122, 142, 120, 90, 23, 20},
    {23, 265, 300, 242, 177, 107, 94},
    {24, 46, 104, 22, 8, 30, 22},
    {25, 137, 152, 116, 76, 67, 56},
    {26, 108, 182, 82, 42, 76, 58},
    {27, 137, 164, 112, 55, 110, 82},
    {28, 100, 150, 84, 60, 29, 24},
    {29, 239, 306, 210, 153, 91, 82},
    {30, 98, 158, 68, 46, 60, 44},
    {31, 223, 316, 192, 121, 149, 116},
    {32, 76, 158, 44, 16, 28, 28},
    {33, 205, 244, 174, 146, 67, 52},
    {34, 142, 266, 116, 46, 67, 64},
    {35, 181, 228, 150, 117, 71, 58},
    {36, 116, 198, 80, 40, 88, 64},
    {37, 265, 400, 228, 122, 204, 158},
    {38, 254, 366, 216, 118, 198, 152},
    {39, 188, 310, 151, 76, 154, 113},
    {40, 114, 220, 82, 48, 51, 42},
    {41, 283, 444, 242, 147, 145, 128},
    {42, 178, 266, 136, 104, 84, 64},
    {43, 395, 532, 352, 249, 209, 168},
    {44, 244, 326, 200, 180, 44, 40},
    {45, 217, 300, 174, 104, 156, 116},
    {46, 530, 646, 484, 363, 211, 188},
    {47, 1105, 1260, 1058, 820, 390, 358},
    {48, 116, 266, 72, 28, 73, 56},
    {49, 373, 408, 330, 246, 135, 120},
    {50, 274, 354, 224, 152, 132, 112},
    {51, 247, 448, 198, 86, 151, 130},
    {52, 216, 414, 164, 84, 152, 116},
    {53, 509, 844, 456, 237, 365, 294},
    {54, 274, 382, 224, 110, 219, 164},
    {55, 393, 472, 342, 291, 111, 94},
    {56, 214, 368, 158, 120, 70, 62},
    {57, 419, 604, 364, 196, 355, 266},
    {58, 478, 670, 420, 306, 182, 164},
    {59, 1013, 1340, 954, 675, 421, 386},
    {60, 196, 374, 136, 92, 120, 88},
    {61, 476, 762, 415, 257, 312, 247},
    {62, 446, 694, 384, 244, 297, 232},
    {63, 365, 488, 304, 205, 218, 166},
    {64, 196, 398, 132, 56, 76, 76},
};

// Inverse plans.
constexpr Row kInverse[] = {
    {2, 2, 2, 0, 0, 0, 0},
    {3, 6, 4, 2, 1, 3, 2},
    {4, 6, 6, 0, 0, 0, 0},
    {5, 17, 12, 8, 6, 5, 4},
    {6, 14, 14, 4, 2, 6, 4},
    {7, 31, 24, 18, 15, 7, 6},
    {8, 16, 20, 2, 0, 2, 2},
    {9, 34, 32, 18, 10, 20, 14},
    {10, 34, 34, 16, 12, 10, 8},
    {11, 71, 68, 50, 33, 31, 26},
    {12, 28, 38, 8, 4, 12, 8},
    {13, 69, 80, 44, 23, 39, 30},
    {14, 62, 62, 36, 30, 14, 12},
    {15, 62, 64, 34, 23, 30, 22},
    {16, 42, 58, 12, 4, 8, 8},
    {17, 85, 116, 54, 23, 33, 32},
    {18, 70, 82, 36, 20, 40, 28},
    {19, 147, 164, 110, 59, 101, 78},
    {20, 70, 86, 32, 24, 20, 16},
    {21, 108, 112, 68, 52, 42, 32},
    {22, 142, 158, 100, 68, 61, 52},
    {23, 287, 284, 242, 201, 67, 62},
    {24, 68, 104, 22, 8, 30, 22},
    {25, 161, 152, 112, 76, 66, 56},
    {26, 138, 186, 88, 46, 78, 60},
    {27, 152, 164, 100, 56, 98, 72},
    {28, 126, 150, 72, 60, 28, 24},
    {29, 267, 306, 210, 153, 91, 82},
    {30, 124, 158, 68, 46, 60, 44},
    {31, 255, 316, 194, 121, 151, 118},
    {32, 104, 156, 42, 16, 26, 26},
    {33, 236, 268, 172, 110, 126, 100},
    {34, 170, 266, 108, 46, 66, 64},
    {35, 215, 228, 146, 117, 70, 58},
    {36, 142, 198, 72, 40, 80, 56},
    {37, 309, 402, 236, 123, 211, 164},
    {38, 294, 366, 220, 119, 201, 156},
    {39, 219, 308, 142, 77, 145, 108},
    {40, 152, 220, 74, 48, 50, 42},
    {41, 323, 444, 242, 147, 145, 128},
    {42, 218, 266, 136, 104, 84, 64},
    {43, 437, 532, 352, 249, 209, 168},
    {44, 286, 358, 200, 132, 124, 104},
    {45, 251, 300, 162, 104, 145, 106},
    {46, 574, 614, 484, 407, 133, 124},
    {47, 1151, 1260, 1058, 820, 390, 358},
    {48, 166, 270, 72, 28, 76, 60},
    {49, 421, 408, 324, 246, 134, 120},
    {50, 322, 354, 224, 152, 132, 112},
    {51, 296, 448, 196, 86, 150, 130},
    {52, 262, 414, 160, 86, 146, 112},
    {53, 555, 840, 450, 233, 363, 292},
    {54, 304, 382, 200, 113, 195, 144},
    {55, 447, 512, 338, 231, 210, 174},
    {56, 268, 368, 158, 120, 70, 62},
    {57, 480, 604, 368, 198, 358, 272},
    {58, 534, 670, 420, 309, 181, 164},
    {59, 1071, 1340, 954, 675, 421, 386},
    {60, 254, 374, 136, 92, 120, 88},
    {61, 539, 762, 418, 257, 315, 250},
    {62, 510, 694, 388, 244, 301, 236},
    {63, 424, 488, 300, 205, 215, 164},
    {64, 260, 400, 134, 56, 78, 78},
};

// Codelets whose counts differ from their row, and why.  Pack and Perm have
// the counts of CCS.  Each still keeps its multiplications and additions
// within kTolerance of the row.
enum class Types { Both, Single };
struct Mismatch {
    bool inverse;
    int n;
    Types types;
    const char* why;
};

constexpr double kTolerance = 0.12;

constexpr const char* kTwentySeven =
    "the inverse is the transpose of the forward network, whose 9-point blocks take their sine products into "
    "the twiddles, and a 27-point block keeps 2 multiplications more than the table (54 holds two)";
constexpr const char* kRadixFour =
    "the inverse is the transposed radix-4 network of the forward, not the table's split radix: 2 more "
    "multiplications and additions at 32, 2 fewer at 64";
constexpr const char* kFortyEight =
    "the transposed network of 3-point blocks then 16-point blocks takes 4 multiplications and 4 additions fewer "
    "than the table";
constexpr const char* kRader =
    "a Rader block: its inverse blocks are transposed forward networks, so sums are grouped otherwise than in the "
    "table and products meet the kernel constants at other places, and for an even q/2 the odd "
    "frequencies come from the transposed odd bins of a q-point transform of zero-padded values; the table's "
    "counts are a guide there";
constexpr const char* kRaderPrecision =
    "a Rader block with the operations of the table, but a few of its sums are formed in single rather than "
    "double precision, rounded at other places (tvk32f only)";

constexpr Mismatch kKnownMismatches[] = {
    {false, 13, Types::Both, kRader}, {false, 19, Types::Both, kRader}, {false, 26, Types::Both, kRader},
    {false, 29, Types::Both, kRader}, {false, 31, Types::Both, kRader}, {false, 37, Types::Both, kRader},
    {false, 38, Types::Both, kRader}, {false, 39, Types::Both, kRader}, {false, 41, Types::Both, kRader},
    {false, 46, Types::Single, kRaderPrecision}, {false, 47, Types::Both, kRader}, {false, 52, Types::Both, kRader},
    {false, 53, Types::Both, kRader}, {false, 57, Types::Both, kRader}, {false, 58, Types::Both, kRader},
    {false, 59, Types::Both, kRader}, {false, 61, Types::Both, kRader}, {false, 62, Types::Both, kRader},
    {true, 13, Types::Both, kRader}, {true, 17, Types::Both, kRader}, {true, 19, Types::Both, kRader},
    {true, 22, Types::Single, kRaderPrecision}, {true, 23, Types::Both, kRader}, {true, 26, Types::Both, kRader},
    {true, 27, Types::Both, kTwentySeven}, {true, 29, Types::Both, kRader}, {true, 32, Types::Both, kRadixFour},
    {true, 34, Types::Both, kRader}, {true, 37, Types::Both, kRader}, {true, 38, Types::Both, kRader},
    {true, 39, Types::Both, kRader}, {true, 41, Types::Both, kRader}, {true, 46, Types::Both, kRader},
    {true, 47, Types::Both, kRader}, {true, 48, Types::Both, kFortyEight}, {true, 52, Types::Both, kRader},
    {true, 53, Types::Both, kRader}, {true, 54, Types::Both, kTwentySeven}, {true, 57, Types::Both, kRader},
    {true, 58, Types::Both, kRader}, {true, 59, Types::Both, kRader}, {true, 61, Types::Both, kRader},
    {true, 62, Types::Single, kRaderPrecision}, {true, 64, Types::Both, kRadixFour},
};

const Mismatch* knownMismatch(bool inverse, int n, bool single) {
    for (const Mismatch& m : kKnownMismatches)
        if (m.inverse == inverse && m.n == n && (m.types == Types::Both || single)) return &m;
    return nullptr;
}

struct Counted {
    int additions, multiplications, doubleMultiplications, doubleAdditions, widenings, narrowings;
};

std::map<std::string, Counted> readCounts() {
    std::map<std::string, Counted> counts;
    std::ifstream in(TVKTEST_OPCOUNTS);
    EXPECT_TRUE(in) << TVKTEST_OPCOUNTS;
    for (std::string line; std::getline(in, line);) {
        std::istringstream fields(line);
        std::string name, plan;
        int complexProducts;
        Counted c;
        if (fields >> name >> plan >> c.additions >> c.multiplications >> complexProducts >> c.doubleMultiplications >>
            c.doubleAdditions >> c.widenings >> c.narrowings)
            counts[name] = c;
    }
    return counts;
}

std::string rowText(const Row& r, bool single) {
    std::ostringstream s;
    s << r.multiplications << " mul, " << r.additions << " add";
    if (single)
        s << ", double " << r.doubleMultiplications << "/" << r.doubleAdditions << ", conversions " << r.widenings
          << "/" << r.narrowings;
    return s.str();
}

std::string countedText(const Counted& c, bool single) {
    return rowText({0, c.multiplications, c.additions, c.doubleMultiplications, c.doubleAdditions, c.widenings,
                    c.narrowings},
                   single);
}

TEST(RealOperationCounts, MatchThePlanTables) {
    const auto counts = readCounts();
    int compared = 0;
    for (bool inverse : {false, true})
        for (const Row& row : inverse ? kInverse : kForward)
            for (bool single : {true, false})
                for (const char* layout : {"CCS", "Pack", "Perm"}) {
                    const std::string name = (inverse ? std::string("tvkgDFTInv_") + layout + "ToR"
                                                      : std::string("tvkgDFTFwd_RTo") + layout) +
                                             "_" + std::to_string(row.n) + (single ? "_32f" : "_64f");
                    const auto it = counts.find(name);
                    ASSERT_NE(it, counts.end()) << name << " has no counts";
                    ++compared;
                    const Counted& c = it->second;
                    bool same = c.multiplications == row.multiplications && c.additions == row.additions;
                    if (single)
                        same = same && c.doubleMultiplications == row.doubleMultiplications &&
                               c.doubleAdditions == row.doubleAdditions && c.widenings == row.widenings &&
                               c.narrowings == row.narrowings;
                    const Mismatch* known = knownMismatch(inverse, row.n, single);
                    if (!same && !known)
                        ADD_FAILURE() << name << ": " << countedText(c, single) << ", table " << rowText(row, single);
                    if (known && same)
                        ADD_FAILURE() << name << " now matches its row: take it off the list (" << known->why << ")";
                    if (known) {
                        EXPECT_NEAR(c.multiplications, row.multiplications, kTolerance * row.multiplications) << name;
                        EXPECT_NEAR(c.additions, row.additions, kTolerance * row.additions) << name;
                    }
                }
    EXPECT_EQ(compared, 2 * 63 * 2 * 3);
}

}  // namespace
