#!/usr/bin/env bash
# Formats all sources by .clang-format; with --check it changes nothing, names what is not formatted, and fails.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

install_packages clang-format
how=(-i)
[ "${1:-}" != --check ] || how=(--dry-run --Werror)
cd "$project"
find include src apps test bench examples \( -name '*.h' -o -name '*.cpp' -o -name '*.cu' \) -print0 |
  xargs -0 clang-format "${how[@]}"
