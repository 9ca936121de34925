#!/usr/bin/env bash
# Installs what is missing, builds, and smooths a real microscope image.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

install_packages "${build_packages[@]}"
build release -DVEXO_BUILD_TESTS=OFF

demo=$project/build/demo
image=$demo/images/usr/lib/python3/dist-packages/skimage/data/cell.png
if [ ! -f "$image" ]; then
  # Only the image is wanted: the package is unpacked, not installed, so that its dependencies stay out.
  mkdir -p "$demo/package"
  if ! (cd "$demo/package" && apt-get download -qq python3-skimage); then
    refresh_package_lists
    (cd "$demo/package" && apt-get download -qq python3-skimage)
  fi
  dpkg -x "$demo"/package/python3-skimage_*.deb "$demo/images"
fi

vexo=$project/build/release/bin/vexo
result=$demo/cell_smooth.png
"$vexo" info "$image"
begin=$(date +%s%N)
"$vexo" run MeanSmoothing2dImg --InImg "$image" --InHalfKnlSizeX 5 --InHalfKnlSizeY 5 --OutImg "$result"
end=$(date +%s%N)
"$vexo" info "$result"
echo "input:  $image"
echo "result: $result (mean of 11 x 11 pixels)"
echo "took:   $(((end - begin) / 1000000)) ms, reading and writing included"
