#!/usr/bin/env bash
# Builds libtvkgenu8 with its examples and benchmarks, runs two examples, then
# prints the quick speed table of ours against FFTW.
set -euo pipefail
cd "$(dirname "$0")"

scripts/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release \
      -DTVKGEN_BUILD_EXAMPLES=ON -DTVKGEN_BUILD_BENCH=ON
ninja -C build -j"$(nproc)"

echo
echo "==== demo: complex DFT ===="
build/examples/tvkgen-demo
echo
echo "==== example: real DFT and Hartley ===="
build/examples/tvkgen-real_dft
echo
echo "==== example: Walsh-Hadamard ===="
build/examples/tvkgen-walsh_hadamard
echo
echo "==== example: DCT-IV ===="
build/examples/tvkgen-dct4
echo
echo "==== quick speed table: ours against FFTW ===="
build/bench/tvkgen-bench-dft --quick
echo
echo "==== quick speed table: real DFT and Hartley against FFTW ===="
build/bench/tvkgen-bench-real --quick
