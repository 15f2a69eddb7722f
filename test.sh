#!/usr/bin/env bash
# Builds everything, tests included, and runs the test suite; exits with
# ctest's status (non-zero at the first failing run).
set -euo pipefail
cd "$(dirname "$0")"

scripts/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release \
      -DTVKGEN_BUILD_TESTS=ON -DTVKGEN_BUILD_EXAMPLES=ON -DTVKGEN_BUILD_BENCH=ON
ninja -C build -j"$(nproc)"
ctest --test-dir build --output-on-failure -j"$(nproc)"

# The whole suite once more under AddressSanitizer and UndefinedBehaviorSanitizer
# (scripts/sanitize.sh, build-asan/).  Off by default, since it more than
# doubles the time of a run; TVKGEN_TEST_SANITIZE=on turns it on.
if [ "${TVKGEN_TEST_SANITIZE:-off}" = on ]; then
  scripts/sanitize.sh
fi
