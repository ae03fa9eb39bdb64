#!/usr/bin/env bash
# Holds the library's dynamic symbols against the list of exports, and its soname against the one that hosts are linked with.
# Usage: exports.sh NM READELF LIBRARY EXPORTS_MAP
set -euo pipefail
nm=$1 readelf=$2 library=$3 map=$4

listed=$(sed -e 's/#.*//' -e '/global:/,/local:/!d' -e 's/.*\(global\|local\)://' "$map" | tr -d ' \t' | tr ';' '\n' | sed '/^$/d' | sort)
# Type A is the version's own name.
exported=$("$nm" -D --defined-only --format=posix "$library" | awk '$2 != "A" { sub(/@.*/, "", $1); print $1 }' | sort)
[[ -n $listed ]] || { echo "no names found in $map"; exit 1; }
diff -U0 --label "listed in exports.map" --label "exported by the library" <(echo "$listed") <(echo "$exported")

soname=$("$readelf" -d "$library" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
[[ $soname == libORBVectorixFoundation.so.1 ]] || { echo "soname is '$soname'"; exit 1; }
