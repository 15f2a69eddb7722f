#!/usr/bin/env bash
# Installs with apt whatever run.sh and test.sh need and is not yet installed.
set -euo pipefail

packages=(g++ cmake ninja-build pkg-config libgtest-dev libbenchmark-dev libfftw3-dev)
missing=()
for package in "${packages[@]}"; do
  dpkg -s "$package" >/dev/null 2>&1 || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "installing: ${missing[*]}"
sudo=()
[ "$(id -u)" -eq 0 ] || sudo=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update
"${sudo[@]}" apt-get install -y "${missing[@]}"
