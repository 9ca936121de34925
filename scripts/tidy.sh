#!/usr/bin/env bash
# Runs clang-tidy over the named sources, or over all but the kernels; fails when it finds something.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

install_packages "${build_packages[@]}" clang clang-tidy
cd "$project"
# With the options of clang: it does not know all of those of GCC.
cmake -S . -B build/tidy -G Ninja -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DVEXO_BUILD_TESTS=OFF \
  -DVEXO_WITH_CUDA=OFF > /dev/null
sources=("$@")
[ ${#sources[@]} -gt 0 ] || readarray -t sources < <(find src apps -name '*.cpp' ! -name '*.kernel.cpp')
printf '%s\n' "${sources[@]}" | xargs -P "$(nproc)" -n 1 clang-tidy -p build/tidy --quiet
