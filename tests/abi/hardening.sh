#!/usr/bin/env bash
# What the compiler and the linker were asked for against misuse of memory must be in the files that are installed.
# Usage: hardening.sh READELF FILE...
set -euo pipefail
readelf=$1
shift

# has FILE WHAT PATTERN OPTION...: what readelf tells of the file must hold a line with the pattern.
has() {
    local file=$1 what=$2 pattern=$3
    shift 3
    "$readelf" --wide "$@" "$file" | grep -E "$pattern" >/dev/null || { echo "${file##*/} has no $what"; exit 1; }
}

for file; do
    has "$file" "read-only relocations" '^ *GNU_RELRO ' --program-headers
    has "$file" "binding at start" '\(FLAGS\).*BIND_NOW' --dynamic
    has "$file" "stack without execution" '^ *GNU_STACK .* RW +0x' --program-headers
    has "$file" "stack protector" '__stack_chk_fail' --dyn-syms
    has "$file" "checked library calls" '__(memcpy|snprintf|vsnprintf|read)_chk' --dyn-syms
    has "$file" "free choice of address" '^ *Type: +DYN ' --file-header
done
