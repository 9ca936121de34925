#!/usr/bin/env bash
# ending.sh PROGRAM: the program must end well however far its runs have come, on an idle and on a busy machine.
set -euo pipefail
program=$1
ends() {
  local i way=$1
  for ((i = 0; i < $2; ++i)); do
    "$program" "$way" 60 $((i * i * 40)) || { echo "$way: status $? after $((i * i * 40)) microseconds"; return 1; }
  done
}
ends return 25
ends return 15 & first=$!
ends sync 15 & second=$!
ends async 15 & third=$!
ends exit 15 & fourth=$!
wait $first; wait $second; wait $third; wait $fourth
