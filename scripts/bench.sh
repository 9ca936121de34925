#!/usr/bin/env bash
# Installs what is missing, builds the benchmark and prints its table. Arguments go to the benchmark, e.g.
# --benchmark_filter=mean.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

install_packages "${build_packages[@]}" libbenchmark-dev libopencv-dev python3-numpy python3-scipy
build release -DVEXO_BUILD_TESTS=OFF -DVEXO_BUILD_BENCHMARKS=ON
exec "$project/build/release/bin/vexo_bench" "$@"
