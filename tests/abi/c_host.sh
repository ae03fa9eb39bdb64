#!/usr/bin/env bash
# Compiles the C host against the installed tree alone, and runs it. The examples must compile there too, those in texts
# included.
# Usage: c_host.sh COMPILER PREFIX LIBDIR OUTPUT
set -euo pipefail
compiler=$1 prefix=$2 libdir=$3 output=$4
here=$(dirname "${BASH_SOURCE[0]}")

export PKG_CONFIG_PATH=$prefix/$libdir/pkgconfig
mapfile -t flags < <(pkg-config --cflags --libs orb-vectorix | xargs -n 1)

compile=("$compiler" -std=c11 -Wall -Wextra -Wpedantic -Werror)
"${compile[@]}" "$here/c_host.c" -o "$output" "${flags[@]}" -Wl,-rpath,"$prefix/$libdir"
"$output" "$here/c_host.c"

"${compile[@]}" "$here/../../examples/host.c" -o "$output-example" "${flags[@]}" -Wl,-rpath,"$prefix/$libdir"
code=0
"$output-example" limits no/such/port 2>"$output-example.err" || code=$?
[[ $code -eq 3 ]] || { echo "examples/host.c: exit code $code for a port that is missing"; exit 1; }

for text in README.md docs/hosts.md; do
    source=$output-$(basename "$text" .md).c
    sed -n '/^```c$/,/^```$/{/^```/!p}' "$here/../../$text" >"$source"
    grep -q ORB_getVectorixCS2 "$source"
    "${compile[@]}" "$source" -o "${source%.c}" "${flags[@]}" -Wl,-rpath,"$prefix/$libdir"
done
