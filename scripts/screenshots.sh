#!/usr/bin/env bash
# Refreshes the screenshots in docs/ (English and Japanese) under Xvfb, against mavix-sim.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/install-deps.sh
build=build/run
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DBUILD_TESTING=OFF >/dev/null
cmake --build "$build" -j"$(nproc)" --target mavix-screenshots
for lang in en_US ja_JP; do
  LANG=$lang.UTF-8 LC_ALL=$lang.UTF-8 xvfb-run -a -s "-screen 0 1280x1024x24" \
    "$build/scripts/screenshots/mavix-screenshots" docs
  LANG=$lang.UTF-8 LC_ALL=$lang.UTF-8 xvfb-run -a -s "-screen 0 1280x1024x24" \
    "$build/scripts/screenshots/mavix-screenshots" docs -expert
done
