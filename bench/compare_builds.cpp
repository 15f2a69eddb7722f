// Times the same Codelets in several builds of the library, to show that a
// body runs at one speed whatever the build (the shard count, and so where
// the linker puts each body, differs between builds).
//
//   tvkgen-compare-builds LIB... -- CODELET...
//
// Each LIB is a path to a libtvkgenu8.so; each CODELET an exported name of
// the DFT, real DFT or Hartley families (three arguments: src, dst, flag).
// The calls alternate between builds and Codelets in short batches for a few
// seconds, and each keeps its least wall-clock ns per call: a shared machine
// that slows down for a second slows every build alike, so what differs
// between the columns is the build.  (Not CPU time: on a virtual machine it
// now and then counts a batch as far shorter than it was, and the least
// would keep that one; see CollectingReporter.)
#include <dlfcn.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

#include "tvkgen.h"

namespace {

using Codelet = tvkStatus (*)(const void* src, void* dst, int32_t flag);
constexpr int kBatch = 100, kRounds = 400;

double wallNs() {
    timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return t.tv_sec * 1e9 + t.tv_nsec;
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<void*> builds;
    int a = 1;
    for (; a < argc && std::strcmp(argv[a], "--") != 0; ++a) {
        // RTLD_LOCAL: each build keeps its own bodies, though the names agree.
        void* build = dlopen(argv[a], RTLD_NOW | RTLD_LOCAL);
        if (!build) {
            std::fprintf(stderr, "%s\n", dlerror());
            return 1;
        }
        builds.push_back(build);
    }
    const std::vector<const char*> names(argv + std::min(a + 1, argc), argv + argc);
    if (builds.empty() || names.empty()) {
        std::fprintf(stderr, "usage: %s LIB... -- CODELET...\n", argv[0]);
        return 2;
    }
    std::vector<std::vector<Codelet>> codelets(names.size());
    for (size_t n = 0; n < names.size(); ++n)
        for (void* build : builds) {
            const auto codelet = reinterpret_cast<Codelet>(dlsym(build, names[n]));
            if (!codelet) {
                std::fprintf(stderr, "%s is not exported\n", names[n]);
                return 1;
            }
            codelets[n].push_back(codelet);
        }

    // Room for the longest complex length, with the spare elements some
    // bodies may read.
    alignas(64) static double src[256], dst[256];
    for (int i = 0; i < 256; ++i) src[i] = (i * 37 % 101) / 50.0 - 1;
    std::vector<std::vector<double>> least(names.size(), std::vector<double>(builds.size(), 1e300));
    for (int round = 0; round < kRounds; ++round)
        for (size_t n = 0; n < names.size(); ++n)
            for (size_t b = 0; b < builds.size(); ++b) {
                const double start = wallNs();
                for (int i = 0; i < kBatch; ++i) {
                    codelets[n][b](src, dst, ScaleNoDiv);
                    asm volatile("" ::: "memory");
                }
                least[n][b] = std::min(least[n][b], (wallNs() - start) / kBatch);
            }

    std::printf("| Codelet |");
    for (size_t b = 0; b < builds.size(); ++b) std::printf(" build %zu ns |", b + 1);
    std::printf(" spread |\n|---|");
    for (size_t b = 0; b <= builds.size(); ++b) std::printf("---:|");
    std::printf("\n");
    for (size_t n = 0; n < names.size(); ++n) {
        std::printf("| %s |", names[n]);
        for (double ns : least[n]) std::printf(" %.1f |", ns);
        const auto [low, high] = std::minmax_element(least[n].begin(), least[n].end());
        std::printf(" %.1f%% |\n", 100 * (*high / *low - 1));
    }
}
