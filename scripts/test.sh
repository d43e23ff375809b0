#!/usr/bin/env bash
# Builds the release and the sanitizer configurations and runs every test in both.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh

for preset in release asan; do
  echo "== $preset: configure and build"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  echo "== $preset: test"
  ctest --preset "$preset" -j2
done
