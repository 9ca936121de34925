#!/usr/bin/env bash
# check_kernel_objects.sh <set> <object>...
#
# A kernel object carries code that the processor may not be able to run. It must therefore neither offer a function
# that the linker could choose for the rest of the library, nor run anything when it is loaded, nor lean on code from
# elsewhere. Fails on: a weak or unique symbol; a global symbol outside vexo::<set>; a start-up section; an undefined
# symbol other than mem*, abort and those of vexo.
set -euo pipefail
export LC_ALL=C
set_name=$1
shift
failed=0
complain() {
  echo "$1: $2"
  failed=1
}
[ $# -gt 0 ] || { echo "no kernel object given"; exit 1; }
for object in "$@"; do
  symbols=$(nm --no-sort "$object")
  sections=$(readelf -SW "$object")
  while read -r kind symbol; do
    name=$(c++filt "$symbol")
    case $kind in
      [a-z]) case $kind in u | v | w) complain "$object" "weak or unique symbol $name" ;; esac ;;
      V | W) complain "$object" "weak symbol $name" ;;
      U)
        case $name in
          memcpy | memmove | memset | memcmp | abort | vexo::* | _GLOBAL_OFFSET_TABLE_) ;;
          *) complain "$object" "undefined symbol $name" ;;
        esac
        ;;
      *)
        case $name in
          "vexo::$set_name::"*) ;;
          *) complain "$object" "global symbol $name outside vexo::$set_name" ;;
        esac
        ;;
    esac
  done < <(awk '{print $(NF-1), $NF}' <<< "$symbols")
  if grep -qE '\.(init_array|ctors)' <<< "$sections"; then complain "$object" "start-up code"; fi
done
exit $failed
