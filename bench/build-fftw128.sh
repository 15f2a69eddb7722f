#!/usr/bin/env bash
# Builds FFTW with 128-bit vector code only (SSE2, no AVX of any width) from
# Debian's own source package, as a rival of the same vector width as ours
# for the benchmarks: Debian's libfftw3 also has AVX codelets (256-bit) and
# runs them where the processor has AVX.  Double and single precision, static,
# with every exported name renamed (fftw_* to fftw128_*, fftwf_* to
# fftw128f_*), so that one benchmark executable links both this FFTW and
# Debian's and runs them side by side.
#
#   bench/build-fftw128.sh [DIR]     DIR defaults to build/fftw128
#
# leaves DIR/prefix/lib/libfftw128.a and DIR/prefix/lib/libfftw128f.a, which
# the CMake option TVKGEN_BENCH_FFTW128 links (TVKGEN_FFTW128_PREFIX names
# DIR/prefix).  Their declarations come from the fftw3.h of libfftw3-dev, the
# same release as this source package.  Each step is skipped when
# what it makes is already there, so running it again is cheap.  Takes about
# 9 minutes on 2 cores, most of it compiling FFTW's codelets twice.
#
# Why renamed static archives rather than another shared libfftw3 loaded
# with dlopen: the two copies would export the same names, and a shared
# FFTW's calls between its own files would bind to whichever copy the
# process loaded first unless RTLD_DEEPBIND holds, which sanitizers and some
# loaders do not honour.  Renaming in the archive settles every reference at
# link time, and the linker refuses a name left clashing.
set -euo pipefail

repo=$(cd "$(dirname "$0")/.." && pwd)
dir=$(mkdir -p "${1:-$repo/build/fftw128}" && cd "${1:-$repo/build/fftw128}" && pwd)
prefix=$dir/prefix
jobs=2

if [ -f "$prefix/lib/libfftw128.a" ] && [ -f "$prefix/lib/libfftw128f.a" ]; then
  echo "FFTW with 128-bit vectors already in $prefix"
  exit 0
fi

sudo=()
[ "$(id -u)" -eq 0 ] || sudo=(sudo)
export DEBIAN_FRONTEND=noninteractive

# ---- the source package: a deb-src entry beside each Debian deb entry --------------
has_deb_src() {
  grep -qsE '^[[:space:]]*deb-src[[:space:]]|^Types:.*deb-src' /etc/apt/sources.list /etc/apt/sources.list.d/*.list \
    /etc/apt/sources.list.d/*.sources
}
if ! has_deb_src; then
  echo "adding deb-src entries for apt-get source"
  for file in /etc/apt/sources.list.d/*.sources; do
    # Only the files of the Debian archive, whatever their mirror.
    grep -qs 'debian-archive-keyring' "$file" || continue
    sed -E 's/^Types:[[:space:]]*deb$/Types: deb-src/' "$file" |
      "${sudo[@]}" tee "${file%.sources}-src.sources" >/dev/null
  done
  if [ -f /etc/apt/sources.list ] && grep -qE '^[[:space:]]*deb[[:space:]]' /etc/apt/sources.list; then
    sed -nE 's/^[[:space:]]*deb([[:space:]])/deb-src\1/p' /etc/apt/sources.list |
      "${sudo[@]}" tee /etc/apt/sources.list.d/debian-src.list >/dev/null
  fi
  has_deb_src || { echo "no Debian deb entry to mirror as deb-src" >&2; exit 1; }
  "${sudo[@]}" apt-get update
fi

needed=(dpkg-dev build-essential binutils)
missing=()
for package in "${needed[@]}"; do dpkg -s "$package" >/dev/null 2>&1 || missing+=("$package"); done
if [ ${#missing[@]} -gt 0 ]; then
  "${sudo[@]}" apt-get install -y "${missing[@]}"
fi

mkdir -p "$dir/source"
source_dir=$(find "$dir/source" -maxdepth 1 -type d -name 'fftw3-*' | head -n 1)
if [ -z "$source_dir" ]; then
  # The package's own patches are applied on extraction; no build dependencies
  # are needed, since the release tarball carries its generated codelets.
  (cd "$dir/source" && apt-get source fftw3)
  source_dir=$(find "$dir/source" -maxdepth 1 -type d -name 'fftw3-*' | head -n 1)
fi

# ---- two builds, out of the source tree -----------------------------------------------
# The flags are those Debian builds its FFTW with (dpkg-buildflags, as its
# debian/rules exports them), so that the two rivals differ only in the
# vector code: Debian adds --enable-avx to --enable-sse2 (double) and
# --enable-sse (single); this build has --enable-sse2 alone, which serves both
# precisions.  -mno-avx keeps the compiler's own code within SSE whatever the
# default target, and --with-pic makes the archives fit the
# position-independent benchmark executables.
export DEB_BUILD_MAINT_OPTIONS=hardening=+all
cflags="$(cd "$source_dir" && dpkg-buildflags --get CFLAGS) -mno-avx"
cppflags=$(cd "$source_dir" && dpkg-buildflags --get CPPFLAGS)
build() {  # build <precision name> <archive name> <configure flags...>
  local name=$1 archive=$2
  shift 2
  local tree=$dir/build-$name
  [ -f "$dir/stage-$name/lib/$archive" ] && return 0
  rm -rf "$tree"
  mkdir -p "$tree"
  (cd "$tree" &&
    "$source_dir/configure" --prefix="$dir/stage-$name" CFLAGS="$cflags" CPPFLAGS="$cppflags" \
      --enable-static --disable-shared --with-pic --enable-sse2 \
      --disable-avx --disable-avx2 --disable-avx512 --disable-avx-128-fma --disable-kcvi \
      --disable-generic-simd128 --disable-generic-simd256 \
      --disable-threads --disable-openmp --disable-mpi --disable-fortran "$@" >configure.log &&
    make -j"$jobs" >make.log &&
    make install >install.log) || { echo "building FFTW ($name) failed: see $tree/*.log" >&2; exit 1; }
}
start=$SECONDS
build double libfftw3.a
build float libfftw3f.a --enable-float
echo "built FFTW twice in $((SECONDS - start)) s"

# ---- renamed copies of the two archives ---------------------------------------------
mkdir -p "$prefix/lib"
rename_symbols() {  # rename_symbols <archive> <old prefix> <new prefix> <output>
  local archive=$1 old=$2 new=$3 output=$4 map
  map=$(mktemp)
  nm --defined-only --extern-only "$archive" | awk 'NF == 3 { print $3 }' | sort -u >"$map.names"
  if grep -v "^$old" "$map.names" >&2; then
    echo "$archive exports names outside $old*: they would clash" >&2
    exit 1
  fi
  sed -E "s/^$old(.*)/$old\1 $new\1/" "$map.names" >"$map"
  objcopy --redefine-syms="$map" "$archive" "$output.part"
  mv "$output.part" "$output"
  rm -f "$map" "$map.names"
}
rename_symbols "$dir/stage-double/lib/libfftw3.a" fftw_ fftw128_ "$prefix/lib/libfftw128.a"
rename_symbols "$dir/stage-float/lib/libfftw3f.a" fftwf_ fftw128f_ "$prefix/lib/libfftw128f.a"
echo "FFTW with 128-bit vectors in $prefix"
