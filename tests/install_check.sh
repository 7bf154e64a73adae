#!/usr/bin/env bash
# Installs the build into a temporary prefix and starts what was installed; with --deb, builds the
# Debian package and checks its files and dependencies.
set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
if [ "${2:-}" = "--deb" ]; then
  (cd "$work" && cpack --config "$1/CPackConfig.cmake" -G DEB >/dev/null)
  deb=$(ls "$work"/mavix-utility_*.deb)
  files=$(dpkg-deb -c "$deb" | awk '{print $6}' | grep -v '/$' | sort | tr '\n' ' ')
  [ "$files" = "./usr/bin/MavixUtility ./usr/bin/mavix ./usr/bin/mavix-sim ./usr/bin/version.txt ./usr/lib/python3/dist-packages/mavix-1.0.0.dist-info/METADATA ./usr/lib/python3/dist-packages/mavix-1.0.0.dist-info/entry_points.txt ./usr/lib/python3/dist-packages/mavix/__init__.py ./usr/lib/python3/dist-packages/mavix/_errors.py ./usr/lib/python3/dist-packages/mavix/_mavix.cpython-311-x86_64-linux-gnu.so ./usr/lib/python3/dist-packages/mavix/pytest_plugin.py ./usr/share/applications/mavix-utility.desktop ./usr/share/doc/mavix-utility/changelog.gz ./usr/share/doc/mavix-utility/copyright ./usr/share/icons/hicolor/128x128/apps/mavix-utility.png ./usr/share/icons/hicolor/scalable/apps/mavix-utility.svg ./usr/share/man/man1/MavixUtility.1.gz ./usr/share/man/man1/mavix-sim.1.gz ./usr/share/man/man1/mavix.1.gz ./usr/share/metainfo/com.example.MavixUtility.metainfo.xml " ] || { echo "unexpected files: $files"; exit 1; }
  dpkg-deb -f "$deb" Depends | grep -q 'libqt6widgets6'
  dpkg-deb -f "$deb" Depends | grep -q 'python3 (>= 3'
  exit 0
fi
cmake --install "$1" --prefix "$work/usr" >/dev/null
"$work/usr/bin/mavix" --help | grep -q 'read ADDR LEN'
# The Python module imports from where it is installed, and its pytest plugin is registered (not
# in the sanitizer build, whose module needs the sanitizer runtime loaded before the interpreter).
grep -q '^MAVIX_SANITIZE:BOOL=ON' "$1/CMakeCache.txt" ||
PYTHONPATH="$work/usr/lib/python3/dist-packages" /usr/bin/python3 -c '
import importlib.metadata, mavix
assert "mavix.pytest_plugin" in [e.value for e in importlib.metadata.entry_points(group="pytest11")]
assert mavix.Device("127.0.0.1:9:9").target == "127.0.0.1:9:9"'
# The installed GUI starts, stays up, and ends cleanly on SIGTERM as when its window is closed.
QT_QPA_PLATFORM=offscreen "$work/usr/bin/MavixUtility" -target:127.0.0.1:9:9 >/dev/null 2>&1 &
pid=$!
sleep 2
kill -0 "$pid" && kill -TERM "$pid" && wait "$pid"
