#!/usr/bin/env bash
# Builds the release configuration and runs the lqsymbol program on its built-in sample data.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
cmake --preset release >/dev/null
cmake --build --preset release --target lqsymbol
build/release/tools/lqsymbol demo "$@"
