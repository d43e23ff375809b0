#!/usr/bin/env bash
# Installs the build tree into a temporary prefix and builds and runs a small
# consumer twice: with find_package(LqSymbol) and with pkg-config. Checks that
# nothing needs LD_LIBRARY_PATH and that no private header is installed.
set -euo pipefail
build=$1
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d "${TMPDIR:-/tmp}/lq-package-XXXXXX")
trap 'rm -rf "$work"' EXIT
unset LD_LIBRARY_PATH
prefix=$work/prefix

cmake --install "$build" --prefix "$prefix" >/dev/null

# Programs and libraries find the project's libraries by a relative RUNPATH.
for file in "$prefix"/bin/lqsymbol "$prefix"/lib/libLq*.so; do
  readelf -d "$file" | grep -q 'RUNPATH.*\$ORIGIN' || { echo "no relative RUNPATH in $file"; exit 1; }
done
"$prefix/bin/lqsymbol" --version

# Only public headers, and each one compiles on its own terms.
if ls "$prefix/include/LqSymbol" | grep -q '_p\.h$'; then
  echo "private headers installed:"; ls "$prefix/include/LqSymbol" | grep '_p\.h$'; exit 1
fi
for header in "$prefix"/include/LqSymbol/*.h; do
  echo "#include \"$(basename "$header")\""
done >"$work/all-headers.h"

cmake -S "$here/consumer" -B "$work/cmake-build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
  -DLQ_INCLUDE_FIRST="$work/all-headers.h" >/dev/null
cmake --build "$work/cmake-build" >"$work/build.log" || { cat "$work/build.log"; exit 1; }
"$work/cmake-build/consumer" "$work/from-cmake.lqc"

export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
# shellcheck disable=SC2046
c++ -include "$work/all-headers.h" "$here/consumer/consumer.cpp" -o "$work/pkg-consumer" \
  $(pkg-config --cflags --libs lqsymbol) -Wl,-rpath,"$(pkg-config --variable=libdir lqsymbol)"
"$work/pkg-consumer" "$work/from-pkg-config.lqc"
"$prefix/bin/lqsymbol" info "$work/from-pkg-config.lqc" >/dev/null
echo "package: installed, found by CMake and pkg-config, consumers ran"
