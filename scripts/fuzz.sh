#!/usr/bin/env bash
# Installs what is missing, builds the fuzz targets with clang and the sanitizers, and runs each for SECONDS (60), two
# at a time. What they find that leads further stays in build/fuzz/corpus and is where the next run begins. Fails,
# naming the input, when one crashes, hangs or takes too much memory.
#
#   fuzz.sh [SECONDS [TARGET...]]     targets: tiff png archive processor guard
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

install_packages "${build_packages[@]}" clang libclang-rt-14-dev zlib1g-dev

seconds=${1:-60}
shift || true
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=(tiff png archive processor guard)
build_targets=("${targets[@]/#/fuzz_}")
build fuzz

out=$project/build/fuzz
export out project seconds

fuzz() {
  local target=$1 corpus=$out/corpus/$1 log=$out/fuzz_$1.log
  mkdir -p "$corpus"
  cp "$project/test/fuzz/corpus/$target"/* "$corpus"
  # Weighing every feature of every input (entropic) would take longer than the inputs themselves.
  if ! "$out/bin/fuzz_$target" -max_total_time="$seconds" -timeout=60 -rss_limit_mb=4096 -max_len=8192 -entropic=0 \
    -print_final_stats=1 -artifact_prefix="$out/crash-$target-" "$corpus" > "$log" 2>&1; then
    grep -E 'FOUND|ERROR|runtime error|SUMMARY|Test unit written' "$log" || tail -n 30 "$log"
    echo "fuzz_$target has failed; the whole of it: $log"
    return 1
  fi
  awk -v target="$target" '/number_of_executed_units/ { runs = $2 } /average_exec_per_sec/ { rate = $2 }
    END { print "fuzz_" target ": " runs " executions, " rate " per second" }' "$log"
}
export -f fuzz

printf '%s\n' "${targets[@]}" | xargs -P 2 -I {} bash -c 'fuzz {}'
