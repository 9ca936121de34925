#!/usr/bin/env bash
# Installs what is missing, builds, and makes the pictures of docs/gallery.md: the commands in that page are run as they
# stand there, so that they stay true.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

install_packages "${build_packages[@]}" python3-pil python3-numpy
build release -DVEXO_BUILD_TESTS=OFF
unpack_images

mkdir -p "$project/build/gallery"
cd "$project/build/gallery"
export PATH=$project/build/release/bin:$PATH
pictures=(/usr/bin/python3 "$project/scripts/gallery_pictures.py")

"${pictures[@]}" prepare "$images"
sed -n 's/^    //p' "$project/docs/gallery.md" > commands.sh
bash -e commands.sh
"${pictures[@]}" compose "$project/docs/gallery"
ls -l "$project/docs/gallery"
