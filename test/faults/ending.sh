#!/usr/bin/env bash
# ending.sh PROGRAM: the program must end well however far its runs have come, on an idle and on a busy machine.
set -euo pipefail
program=$1
# A run that calls exit leaves the threads that it shared.
export TSAN_OPTIONS=${TSAN_OPTIONS:+$TSAN_OPTIONS:}report_thread_leaks=0
ends() {
  local i way=$1
  for ((i = 0; i < $2; ++i)); do
    "$program" "$way" 60 $((i * i * 100)) || { echo "$way: status $? after $((i * i * 100)) microseconds"; return 1; }
  done
}
ends return 15
ends return 8 & first=$!
ends sync 8 & second=$!
ends async 8 & third=$!
ends exit 8 & fourth=$!
wait $first; wait $second; wait $third; wait $fourth
