#!/usr/bin/env bash
# check.sh <build folder> [<program>...]: installs the build, moves the installed tree, and builds and runs a user's
# project against it, once through the CMake package and once through pkg-config; the installed programs run, too.
set -euo pipefail
build=$(cd "$1" && pwd)
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/installed" > "$work/install.log"
mv "$work/installed" "$work/moved"

cmake -S "$here" -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH="$work/moved" > "$work/configure.log"
cmake --build "$work/build"
"$work/build/consumer"

PKG_CONFIG_PATH=$(dirname "$(find "$work/moved" -name vexo.pc)")
export PKG_CONFIG_PATH
# shellcheck disable=SC2046
g++ -std=c++17 "$here/main.cpp" -o "$work/plain" $(pkg-config --cflags --libs vexo)
LD_LIBRARY_PATH=$(pkg-config --variable=libdir vexo) "$work/plain"

for program in "${@:2}"; do "$work/moved/bin/$program" --version; done
if grep -rl "$build" "$work/moved" --include='*.cmake' --include='*.pc' --include='*.h'; then
  echo "the installed files above name the build folder"
  exit 1
fi
