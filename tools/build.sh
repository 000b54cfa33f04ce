#!/bin/bash
# Configures and builds a preset, and says something only when that fails:
#
#   tools/build.sh PRESET [argument for the configuration...]
set -euo pipefail
cd "$(dirname "$0")/.."
preset=$1
shift

echo "Building $preset"
mkdir -p "build/$preset"
log=build/$preset/build.log
wrap=()
# Instrumented programs, which the build runs to list their tests, need a fixed memory layout.
if [[ $preset == tsan ]] && setarch "$(uname -m)" --addr-no-randomize true 2>/dev/null; then
    wrap=(setarch "$(uname -m)" --addr-no-randomize)
fi
{ cmake --preset "$preset" "$@" && "${wrap[@]}" cmake --build "build/$preset"; } >"$log" 2>&1 || {
    cat "$log" >&2
    exit 1
}
