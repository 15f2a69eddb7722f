// tvkgen-codegen: writes the generated sources of libtvkgenu8.
//
//   tvkgen-codegen --out DIR --shards N
//
// DIR/src/<family>/*.cpp   Codelet bodies, N files per family and type
// DIR/src/dispatcher/      the stubs and their address rows
// DIR/tvkgenu8.map         the linker's version script
// DIR/exports_*.txt        all exported names, and those built
// DIR/opcounts.tsv         real operation counts of every Codelet
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>

#include "families/complex_dft.h"
#include "families/hartley.h"
#include "families/real_dft.h"
#include "exports.h"
#include "output.h"
#include "families/wht.h"

int main(int argc, char** argv) {
    std::string dir;
    int shards = 4;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string flag = argv[i];
        if (flag == "--out") dir = argv[i + 1];
        else if (flag == "--shards") shards = std::atoi(argv[i + 1]);
    }
    if (dir.empty() || shards < 1) {
        std::cerr << "usage: tvkgen-codegen --out DIR --shards N\n";
        return 2;
    }
    try {
        gen::Output out(dir);
        std::ostringstream counts;
        counts << "codelet\tplan\tadditions\tmultiplications\tcomplex_products\tdouble_multiplications"
                  "\tdouble_additions\twidenings\tnarrowings\n";
        gen::writeComplexDft(out, shards, counts);
        gen::writeRealDft(out, shards, counts);
        gen::writeHartley(out, shards, counts);
        out.write("opcounts.tsv", counts.str());
        gen::writeWalshHadamard(out, shards);
        gen::writeExports(out, {gen::Family::ComplexDft, gen::Family::RealDft, gen::Family::Hartley,
                                gen::Family::WalshHadamard, gen::Family::Dct4, gen::Family::Version});
    } catch (const std::exception& e) {
        std::cerr << "tvkgen-codegen: " << e.what() << '\n';
        return 1;
    }
    return 0;
}
