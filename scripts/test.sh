#!/usr/bin/env bash
# Installs what is missing, checks the format, builds, and runs all tests: as released, without any warning of the
# compiler, with the address and undefined-behaviour sanitizers, and the frame with the thread sanitizer.
# "test.sh release" runs only the first.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

install_packages "${build_packages[@]}" libgtest-dev libgmock-dev python3 python3-numpy python3-tifffile libtiff-tools

"$project/scripts/format.sh" --check

presets=("$@")
[ ${#presets[@]} -gt 0 ] || presets=(release asan tsan)
for preset in "${presets[@]}"; do
  tests=()
  build_targets=()
  options=(-DVEXO_BUILD_TESTS=ON)
  # Only here: sanitizers make the compiler warn of what is right.
  [ "$preset" != release ] || options+=(-DCMAKE_COMPILE_WARNING_AS_ERROR=ON)
  if [ "$preset" = tsan ]; then
    # What filters do in threads, they do through the frame: one call of each is enough.
    build_targets=(CoreTest ImageTest ProcessingTest ThreadTest ending)
    tests=(-R '^(CoreTest|ImageTest|ProcessingTest|ThreadTest|Ending)$')
  fi
  build "$preset" "${options[@]}"
  echo "== $preset"
  (cd "$project" && ctest --preset "$preset" "${tests[@]}")
done
