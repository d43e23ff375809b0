#!/usr/bin/env bash
# Installs the Debian 12 packages that the build, the tests and the benchmarks need.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  clang-16 libclang-rt-16-dev llvm-16
  libutfcpp-dev libsqlite3-dev libcairo2-dev libpixman-1-dev
  libcli11-dev nlohmann-json3-dev libpng-dev librsvg2-dev
  libgtest-dev libgmock-dev librapidcheck-dev libbenchmark-dev
  poppler-utils
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
