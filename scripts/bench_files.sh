#!/usr/bin/env bash
# Installs what is missing, builds, and times reading and writing a stack of 1 GiB beside copying it with cp:
#
#   bench_files.sh [FOLDER [ROUNDS]]     by default build/files, 5 rounds, of which the median is printed
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

install_packages "${build_packages[@]}" python3-numpy python3-tifffile
build release -DVEXO_BUILD_TESTS=OFF

folder=${1:-$project/build/files}
rounds=${2:-5}
mkdir -p "$folder"
trap 'rm -f "$folder"/stack.tif "$folder"/copy.tif "$folder"/out.tif' EXIT
/usr/bin/python3 - "$folder/stack.tif" << 'PYTHON'
import sys
import numpy, tifffile
planes = numpy.random.default_rng(1).integers(0, 4096, (512, 1024, 1024), numpy.uint16)
tifffile.imwrite(sys.argv[1], planes, imagej=True, metadata={'axes': 'ZYX'})
PYTHON
cat "$folder/stack.tif" > /dev/null  # all of them find it in memory

vexo=$project/build/release/bin/vexo
copy() { cp "$folder/stack.tif" "$folder/copy.tif"; }
flushed_copy() { copy; sync "$folder/copy.tif"; }
pass() { cat "$folder/stack.tif" > /dev/null; }
info() { "$vexo" info "$folder/stack.tif"; }
run() {
  "$vexo" run MeanSmoothing2dImg --InImg "$folder/stack.tif" --InHalfKnlSizeX 0 --InHalfKnlSizeY 0 --OutImg "$folder/out.tif" --quiet
}
for what in copy flushed_copy pass info run; do
  for ((round = 0; round < rounds; ++round)); do
    rm -f "$folder/copy.tif" "$folder/out.tif"
    sync
    begin=$(date +%s%N)
    "$what" > /dev/null
    echo $((($(date +%s%N) - begin) / 1000000))
  done | sort -n | awk -v what="$what" '{ times[NR] = $1 } END { printf "%-14s %6d ms\n", what, times[int((NR + 1) / 2)] }'
done
