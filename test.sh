#!/usr/bin/env bash
# Builds everything, tests included, and runs the test suite; exits with
# ctest's status.
set -euo pipefail
cd "$(dirname "$0")"

scripts/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release \
      -DTVKGEN_BUILD_TESTS=ON -DTVKGEN_BUILD_EXAMPLES=ON -DTVKGEN_BUILD_BENCH=ON
ninja -C build -j"$(nproc)"
exec ctest --test-dir build --output-on-failure -j"$(nproc)"
