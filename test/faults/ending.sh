#!/usr/bin/env bash
# ending.sh PROGRAM: the program must end well however far its runs have come, on an idle and on a busy machine.
set -euo pipefail
program=$1
ends() {
  local i
  for ((i = 0; i < $1; ++i)); do
    "$program" 60 $((i * i * 40)) || { echo "ended with status $? after $((i * i * 40)) microseconds"; return 1; }
  done
}
ends 25
ends 15 & first=$!
ends 15 & second=$!
ends 15 & third=$!
wait $first; wait $second; wait $third
