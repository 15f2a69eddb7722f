#!/usr/bin/env bash
# Builds the library with several shard counts (each count puts the bodies in
# other files, and so at other addresses) and times the longest bodies of
# every build side by side with tvkgen-compare-builds.
#
#   bench/compare-shards.sh [BUILD] [SHARDS...]
#
# BUILD is a configured build with TVKGEN_BUILD_BENCH=ON (default build);
# the shard builds go to BUILD/shards/<count>.  SHARDS default to 1 3 8.
# About 7 minutes per library build on 2 cores.
set -euo pipefail

repo=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "${1:-$repo/build}" && pwd)
shift || true
counts=("$@")
[ ${#counts[@]} -gt 0 ] || counts=(1 3 8)

ninja -C "$build" tvkgen-compare-builds >/dev/null
libraries=()
for count in "${counts[@]}"; do
  dir=$build/shards/$count
  cmake -S "$repo" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=Release -DTVKGEN_SHARDS="$count" \
    -DTVKGEN_BUILD_EXAMPLES=OFF -DTVKGEN_BUILD_TOOLS=OFF >/dev/null
  ninja -C "$dir" tvkgenu8 >/dev/null
  libraries+=("$dir/src/libtvkgenu8.so")
done

codelets=()
for n in 47 59; do
  codelets+=(tvkgDFTFwd_CToC_${n}_64fc tvkgDFTInv_CToC_${n}_64fc tvkgDFTFwd_CToC_${n}_32fc tvkgDFTInv_CToC_${n}_32fc)
  for t in 32f 64f; do
    codelets+=(tvkgDFTFwd_RToCCS_${n}_$t tvkgDFTInv_CCSToR_${n}_$t tvkgHartley_${n}_$t)
  done
done
echo "builds, in this order: shard counts ${counts[*]}"
"$build/bench/tvkgen-compare-builds" "${libraries[@]}" -- "${codelets[@]}"
