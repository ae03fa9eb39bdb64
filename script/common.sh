# What the scripts share: sourced by them, never run. Goes to the top of the checkout.
# shellcheck shell=bash
set -euo pipefail
CDPATH='' cd -- "$(dirname "${BASH_SOURCE[0]}")/.."

fail() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

# step TEXT COMMAND...: one line for the step; what the command says goes to build/log/, and is shown only if it fails.
step() {
    local text=$1 log began=$SECONDS
    shift
    mkdir -p build/log || fail "build/ cannot be written"
    log=build/log/$(tr -cs 'a-zA-Z0-9' '-' <<<"$text" | sed 's/-*$//').log
    { : >"$log"; } 2>/dev/null || fail "$PWD/$log cannot be written"
    printf '%-44s' "$text"
    if ! "$@" >"$log" 2>&1; then
        printf 'failed\n\n'
        grep -v '^\[[0-9]*/[0-9]*\] ' "$log" | tail -n 100 || true
        fail "failed: $*
(the whole log: $log)"
    fi
    printf '%4d s\n' $((SECONDS - began))
}

# build PRESET [TARGET]: configures it, and builds the target, or all of it, on all processors.
build() {
    step "Configuring ($1)" cmake --preset "$1"
    step "Building ($1)" cmake --build --preset "$1" --parallel "$(nproc)" --target "${2-all}"
}
