#!/bin/bash
# Makes the pictures of the application icon and of the mark anew, after one of their drawings in
# resources/ was changed.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --preset dev >/dev/null
cmake --build build/dev --target tavo_draw_icons >/dev/null
build/dev/bin/tavo_draw_icons resources
