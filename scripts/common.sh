# Shared by the scripts of this folder: where the project is, and how missing packages come in. Sourced, not run.
project=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

build_packages=(g++ cmake ninja-build pkg-config ccache libboost-dev liblog4cplus-dev libtiff-dev libpng-dev libpugixml-dev
  nlohmann-json3-dev libcli11-dev)

# Runs a command as root, with sudo where that is not who we are.
as_root() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

refresh_package_lists() {
  as_root apt-get update -qq
}

# Installs those of the named Debian packages that are missing.
install_packages() {
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2> /dev/null | grep -q '^install ok installed$' || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  echo "Installing ${missing[*]}"
  refresh_package_lists
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

# build <preset> [cmake options]: configures and builds into build/<preset>; only the targets in build_targets, when
# there are any.
build_targets=()
build() {
  local preset=$1
  shift
  (cd "$project" && cmake --preset "$preset" "$@" > /dev/null &&
    cmake --build --preset "$preset" ${build_targets[@]:+--target "${build_targets[@]}"})
}

# Unpacks real images into the folder $images, unless they are there.
images=$project/build/demo/images/usr/lib/python3/dist-packages/skimage/data
unpack_images() {
  local demo=$project/build/demo
  [ ! -f "$images/cell.png" ] || return 0
  # Only the images are wanted: the package is unpacked, not installed, so that its dependencies stay out.
  mkdir -p "$demo/package"
  if ! (cd "$demo/package" && apt-get download -qq python3-skimage); then
    refresh_package_lists
    (cd "$demo/package" && apt-get download -qq python3-skimage)
  fi
  dpkg -x "$demo"/package/python3-skimage_*.deb "$demo/images"
}
