#!/usr/bin/env bash
# example.sh <smooth> <source folder>: the compiled example runs, and the README shows it as it is.
set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
/usr/bin/python3 - "$work/in.png" <<'PY'
import struct, sys, zlib

def chunk(name, data):
    return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))

# 4 x 4 pixels of 8-bit grey: rows 0 10 20 30.
rows = b"".join(b"\0" + bytes([0, 10, 20, 30]) for _ in range(4))
open(sys.argv[1], "wb").write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", 4, 4, 8, 0, 0, 0, 0)) +
                              chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))
PY
# The mirrored window of the first pixel holds 0, 0, 10.
[ "$("$1" "$work/in.png" "$work/out.png" 1)" = "first pixel: 3.33333" ]
[ -s "$work/out.png" ]
/usr/bin/python3 - "$2/examples/smooth.cpp" "$2/README.md" <<'PY'
import sys

example, readme = (open(path).read() for path in sys.argv[1:])
body = example[example.index("#include"):]
if body not in readme:
    sys.exit("the README does not show examples/smooth.cpp as it is")
PY
