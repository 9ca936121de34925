#!/usr/bin/env bash
# expect_leak.sh <check> <object>: the check must fail, because of the object and not because it cannot run.
set -uo pipefail
complaint=$("$1" avx2 "$2")
status=$?
echo "$complaint"
[ $status -eq 1 ] && [[ $complaint == *"$2: "* ]]
