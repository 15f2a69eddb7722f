// Complex DFT Codelets of libtvkgenu8 against FFTW, every length 2 to 64, both
// element types, both directions.
//
//   tvkgen-bench-dft [--quick] [--opcounts=FILE] [Google Benchmark flags]
//
// Each case times ours and FFTW on the same 16-byte aligned arrays (from
// fftw_malloc) holding the same random signal, out of place; with the CMake
// option TVKGEN_BENCH_FFTW128, a second FFTW too, built with 128-bit vectors
// only (fftw_rivals.h).  Ours is called through a table of Codelet addresses
// with ScaleNoDiv, since FFTW does not scale; FFTW runs a FFTW_MEASURE plan
// through its new-array execute.  Before timing, our result is compared with
// each FFTW's so that a wrong answer cannot pass for a fast one.  After the
// runs a table of ns per call is printed, with the ratio of ours to each
// FFTW and the lower bound of 128-bit code on this core.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench_support.h"
#include "fftw_rivals.h"
#include "tvkgen.h"

namespace {

// ---- the library, per element type --------------------------------------------

template <class Complex>
struct Types;

template <>
struct Types<tvk32fc> {
    static constexpr const char* name = "tvk32fc";
    static constexpr int lanes = 4;  // reals per 128-bit register
    using Real = float;
    using Codelet = tvkDFTCodelet_32fc;
};

// The tvk32fc bodies up to this length are scalar code, not vectors.
constexpr int kLastScalarLength32fc = 5;

template <>
struct Types<tvk64fc> {
    static constexpr const char* name = "tvk64fc";
    static constexpr int lanes = 2;
    using Real = double;
    using Codelet = tvkDFTCodelet_64fc;
};

template <class Complex>
struct CodeletRow {
    int length;
    typename Types<Complex>::Codelet forward, inverse;
};

#define TVKGEN_ROW_32FC(N) CodeletRow<tvk32fc>{N, tvkgDFTFwd_CToC_##N##_32fc, tvkgDFTInv_CToC_##N##_32fc},
#define TVKGEN_ROW_64FC(N) CodeletRow<tvk64fc>{N, tvkgDFTFwd_CToC_##N##_64fc, tvkgDFTInv_CToC_##N##_64fc},
const CodeletRow<tvk32fc> kCodelets32fc[] = {TVKGEN_DFT_LENGTHS(TVKGEN_ROW_32FC)};
const CodeletRow<tvk64fc> kCodelets64fc[] = {TVKGEN_DFT_LENGTHS(TVKGEN_ROW_64FC)};
#undef TVKGEN_ROW_32FC
#undef TVKGEN_ROW_64FC

// ---- one case: a length, a type, a direction, with its arrays -------------

enum class Direction { Forward, Inverse };

const char* directionName(Direction d) { return d == Direction::Forward ? "fwd" : "inv"; }

template <class Complex>
class Case {
public:
    using T = Types<Complex>;
    using Fftw = tvkbench::Fftw<typename T::Real, tvkbench::FftwBuild::Native>;

    Case(int length, typename T::Codelet codelet, Direction direction)
        : length_(length), direction_(direction), codelet_(codelet) {
        // Two spare elements: some tvk32fc bodies read up to 16 bytes past the end.
        const size_t bytes = sizeof(Complex) * (length + 2);
        src_ = static_cast<Complex*>(Fftw::allocate(bytes));
        dst_ = static_cast<Complex*>(Fftw::allocate(bytes));
        fill();
    }
    ~Case() {
        Fftw::release(src_);
        Fftw::release(dst_);
    }
    Case(const Case&) = delete;
    Case& operator=(const Case&) = delete;

    // The same random signal every time: FFTW_MEASURE overwrites the arrays
    // while planning, so each rival fills them again after.
    void fill() {
        std::mt19937 random(1000 * length_ + static_cast<int>(direction_));
        std::uniform_real_distribution<typename T::Real> uniform(-1, 1);
        for (int k = 0; k < length_ + 2; ++k) src_[k] = Complex{uniform(random), uniform(random)};
    }

    void timeOurs(benchmark::State& state) {
        for (auto _ : state) {
            tvkStatus status = codelet_(src_, dst_, ScaleNoDiv);
            benchmark::DoNotOptimize(status);
            benchmark::ClobberMemory();
        }
    }

    int length() const { return length_; }
    Direction direction() const { return direction_; }
    tvkStatus ours() { return codelet_(src_, dst_, ScaleNoDiv); }
    // The arrays as FFTW sees them, whatever its build: a complex is R[2] in all.
    typename Fftw::Complex* src() { return reinterpret_cast<typename Fftw::Complex*>(src_); }
    typename Fftw::Complex* dst() { return reinterpret_cast<typename Fftw::Complex*>(dst_); }
    const Complex* result() const { return dst_; }

private:
    int length_;
    Direction direction_;
    typename T::Codelet codelet_;
    Complex* src_;
    Complex* dst_;
};

// One build of FFTW on the arrays of a case: a FFTW_MEASURE plan run through
// new-array execute.
template <class Complex, tvkbench::FftwBuild B>
class Rival : public tvkbench::FftwRival<Rival<Complex, B>, Case<Complex>,
                                         tvkbench::Fftw<typename Types<Complex>::Real, B>> {
public:
    using Fftw = tvkbench::Fftw<typename Types<Complex>::Real, B>;

    explicit Rival(std::shared_ptr<Case<Complex>> c) : Rival::FftwRival(std::move(c)) {
        this->plan_ = Fftw::dft(this->case_->length(), this->case_->src(), this->case_->dst(),
                                this->case_->direction() == Direction::Forward ? FFTW_FORWARD : FFTW_BACKWARD);
        this->case_->fill();
    }

    void execute() { Fftw::executeDft(this->plan_, this->case_->src(), this->case_->dst()); }

    // Largest difference between our result and this FFTW's, relative to the
    // largest output magnitude; negative when our call fails.
    double relativeDifference() {
        Case<Complex>& c = *this->case_;
        if (c.ours() != StatusOk) return -1;
        const std::vector<Complex> ours(c.result(), c.result() + c.length());
        execute();
        const Complex* theirs = c.result();
        double largest = 0, difference = 0;
        for (int k = 0; k < c.length(); ++k) {
            largest = std::max(largest, std::hypot(double(theirs[k].re), double(theirs[k].im)));
            difference = std::max(difference,
                                  std::hypot(double(ours[k].re) - theirs[k].re, double(ours[k].im) - theirs[k].im));
        }
        return difference / largest;
    }
};

// ---- results ------------------------------------------------------------------

// Ordered by type, then length, then direction: the order of the table.
struct Key {
    std::string type;
    int length;
    std::string direction;
    auto operator<=>(const Key&) const = default;
};

// ns per call of ours and of each FFTW build, in the order of kFftwBuilds.
struct Timing {
    double ours = NAN;
    std::array<double, tvkbench::kFftwCount> fftw;
};

std::string benchmarkName(const Key& key, const char* library) {
    return std::string(library) + "/" + key.type + "/" + key.direction + "/" + std::to_string(key.length);
}

std::string codeletName(const Key& key) {
    return std::string(key.direction == "fwd" ? "tvkgDFTFwd_CToC_" : "tvkgDFTInv_CToC_") + std::to_string(key.length) +
           "_" + key.type.substr(3);
}

void printTable(const std::map<Key, Timing>& timings, const std::string& countsPath) {
    using tvkbench::kFftwBuilds;
    using tvkbench::kFftwCount;
    const auto ops = tvkbench::readOpCounts(countsPath);
    const bool withBound = !ops.empty();
    const double ghz = withBound ? tvkbench::measuredClockGHz() : 0;
    if (withBound) {
        tvkbench::printBoundNote(ghz, countsPath);
        std::printf("        Lanes: 4 for tvk32fc, 2 for tvk64fc, but 1 for the scalar tvk32fc bodies of\n"
                    "        lengths 2 to %d, the only ones with conversions.  A case where FFTW runs below\n"
                    "        the bound (with wider vectors) is out of reach for 128-bit code.\n",
                    kLastScalarLength32fc);
    } else {
        std::printf("\n(no bound column: cannot read %s)\n", countsPath.c_str());
    }

    std::printf("\n| length | type | dir | ours ns |");
    tvkbench::printFftwHeads();
    std::printf("%s\n|---:|---|---|---:|", withBound ? " bound ns | ours/bound |" : "");
    tvkbench::printFftwRule();
    std::printf("%s\n", withBound ? "---:|---:|" : "");
    tvkbench::RatioMedians medians({"type", "dir"}, tvkbench::fftwRatioHeads(withBound));
    std::array<int, kFftwCount> belowBound{};
    for (const auto& [key, t] : timings) {
        const std::string group = key.type + " | " + key.direction;
        std::printf("| %d | %s | %s | %.2f |", key.length, key.type.c_str(), key.direction.c_str(), t.ours);
        tvkbench::printFftwCells(t.ours, t.fftw);
        for (size_t i = 0; i < kFftwCount; ++i) medians.add(group, i, t.ours / t.fftw[i]);
        if (withBound) {
            const auto it = ops.find(codeletName(key));
            const bool single = key.type == Types<tvk32fc>::name;
            if (it != ops.end()) {
                const int lanes = single ? (key.length <= kLastScalarLength32fc ? 1 : Types<tvk32fc>::lanes)
                                         : Types<tvk64fc>::lanes;
                const double bound = tvkbench::boundNs(it->second, lanes, ghz);
                for (size_t i = 0; i < kFftwCount; ++i) belowBound[i] += t.fftw[i] < bound;
                medians.add(group, kFftwCount, t.ours / bound);
                std::printf(" %.2f | %.2f |", bound, t.ours / bound);
            } else {
                std::printf(" - | - |");
            }
        }
        std::printf("\n");
    }
    medians.print();
    if (withBound) {
        std::printf("\n");
        for (size_t i = 0; i < kFftwCount; ++i)
            std::printf("cases where %s ran below the 128-bit bound: %d\n", tvkbench::fftwLabel(kFftwBuilds[i]),
                        belowBound[i]);
    }
}

// ---- registration -------------------------------------------------------------

template <class Complex, size_t Count>
void registerCases(const CodeletRow<Complex> (&rows)[Count], double minTime, std::vector<Key>& keys, int& mismatches) {
    for (const auto& row : rows) {
        for (Direction direction : {Direction::Forward, Direction::Inverse}) {
            auto c = std::make_shared<Case<Complex>>(row.length, direction == Direction::Forward ? row.forward : row.inverse,
                                                     direction);
            const Key key{Types<Complex>::name, row.length, directionName(direction)};
            benchmark::RegisterBenchmark(benchmarkName(key, "ours").c_str(), [c](benchmark::State& s) { c->timeOurs(s); })
                ->MinTime(minTime)->Unit(benchmark::kNanosecond);
            tvkbench::registerFftwRivals(
                [&](auto build) { return std::make_shared<Rival<Complex, build>>(c); },
                [&](const char* library) { return benchmarkName(key, library); }, codeletName(key),
                std::is_same_v<Complex, tvk32fc> ? 1e-5 : 1e-13, minTime, mismatches);
            keys.push_back(key);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    const std::string countsPath = tvkbench::takeOpCountsPath(argc, argv);
    bool quick = false;
    if (!tvkbench::initialize(argc, argv, quick)) return 2;

    const double minTime = quick ? 0.01 : 0.04;
    std::vector<Key> keys;
    int mismatches = 0;
    registerCases(kCodelets32fc, minTime, keys, mismatches);
    registerCases(kCodelets64fc, minTime, keys, mismatches);

    std::printf("timing %zu cases, ours and %s, %.2f s minimum per run%s\n", keys.size(), tvkbench::fftwLabels().c_str(),
                minTime, quick ? " (quick)" : "");
    std::fflush(stdout);
    tvkbench::CollectingReporter reporter(!quick);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    std::map<Key, Timing> timings;
    for (const Key& key : keys) {
        Timing t{reporter.ns(benchmarkName(key, "ours")), {}};
        bool timed = std::isfinite(t.ours);
        for (size_t i = 0; i < tvkbench::kFftwCount; ++i) {
            t.fftw[i] = reporter.ns(benchmarkName(key, tvkbench::fftwName(tvkbench::kFftwBuilds[i])));
            timed = timed || std::isfinite(t.fftw[i]);
        }
        if (timed) timings[key] = t;  // else filtered out
    }
    printTable(timings, countsPath);
    return mismatches == 0 && reporter.errors == 0 ? 0 : 1;
}
