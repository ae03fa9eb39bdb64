#!/usr/bin/env bash
# Compiles the C host against the installed tree alone, and runs it. The README's example must compile there too.
# Usage: c_host.sh COMPILER PREFIX LIBDIR OUTPUT
set -euo pipefail
compiler=$1 prefix=$2 libdir=$3 output=$4
here=$(dirname "${BASH_SOURCE[0]}")

# The tree is not installed where it was configured for. Word lists of pkg-config cannot hold a prefix with blanks, so that
# part of the flags is put in here.
export PKG_CONFIG_PATH=$prefix/$libdir/pkgconfig
mapfile -t flags < <(pkg-config --define-variable=prefix=@PREFIX@ --cflags --libs orb-vectorix | xargs -n 1)
flags=("${flags[@]//@PREFIX@/$prefix}")

compile=("$compiler" -std=c11 -Wall -Wextra -Wpedantic -Werror)
"${compile[@]}" "$here/c_host.c" -o "$output" "${flags[@]}" -Wl,-rpath,"$prefix/$libdir"
"$output" "$here/c_host.c"

sed -n '/^```c$/,/^```$/{/^```/!p}' "$here/../../README.md" >"$output-readme.c"
grep -q ORB_getVectorixCS2 "$output-readme.c"
"${compile[@]}" "$output-readme.c" -o "$output-readme" "${flags[@]}" -Wl,-rpath,"$prefix/$libdir"
