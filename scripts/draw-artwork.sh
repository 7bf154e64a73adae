#!/bin/sh
# Regenerates the program's pictures (eye states, maker's logo, application icon) into ui/images.
# Needs only g++ and the Qt 6 Gui development files; the result is committed, the build never runs it.
set -eu
repo=$(cd "$(dirname "$0")/.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
g++ -std=c++17 -O1 -fPIC -Wall -Wextra -o "$work/draw-artwork" "$repo/scripts/artwork/draw-artwork.cpp" \
    $(pkg-config --cflags --libs Qt6Gui)
"$work/draw-artwork" "$repo/ui/images"
echo "Pictures written to $repo/ui/images"
