#!/usr/bin/env bash
# Installs what is missing, builds, and smooths a real microscope image.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

install_packages "${build_packages[@]}"
build release -DVEXO_BUILD_TESTS=OFF

unpack_images

vexo=$project/build/release/bin/vexo
image=$images/cell.png
result=$project/build/demo/cell_smooth.png
"$vexo" info "$image"
begin=$(date +%s%N)
"$vexo" run MeanSmoothing2dImg --InImg "$image" --InHalfKnlSizeX 5 --InHalfKnlSizeY 5 --OutImg "$result"
end=$(date +%s%N)
"$vexo" info "$result"
echo "input:  $image"
echo "result: $result (mean of 11 x 11 pixels)"
echo "took:   $(((end - begin) / 1000000)) ms, reading and writing included"
