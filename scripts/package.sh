#!/usr/bin/env bash
# Builds the Debian package of the library in build-package/, installs it
# with apt-get, builds and runs a consumer against it through find_package
# and pkg-config, then removes the package again (--keep leaves it installed).
# Needs g++, cmake, ninja-build and pkg-config; uses sudo when not root.
set -euo pipefail
cd "$(dirname "$0")/.."

keep=no
[ "${1:-}" = --keep ] && keep=yes
sudo=()
[ "$(id -u)" -eq 0 ] || sudo=(sudo)

cmake -S . -B build-package -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
      -DTVKGEN_BUILD_TESTS=OFF -DTVKGEN_BUILD_BENCH=OFF -DTVKGEN_BUILD_EXAMPLES=OFF -DTVKGEN_BUILD_TOOLS=OFF
ninja -C build-package -j"$(nproc)"
(cd build-package && cpack -G DEB)
deb=$(ls build-package/libtvkgenu8_*_amd64.deb)
echo "package: $deb"

export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get install -y "./$deb"
cmake -DWORK_DIR="$PWD/build-package/consumer-check" -DCONSUMER_DIR="$PWD/tests/install/consumer" \
      -DC_COMPILER=cc -DGENERATOR=Ninja -P tests/install/installed_test.cmake
if [ "$keep" = no ]; then
  "${sudo[@]}" apt-get purge -y libtvkgenu8
fi
