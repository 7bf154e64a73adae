#!/usr/bin/env bash
# The one list of Debian packages Mavix Utility needs to build, test, run and take screenshots.
# Quick no-op when everything is present; uses sudo when not run as root.
set -euo pipefail

PACKAGES=(
  build-essential cmake ninja-build pkg-config
  qt6-base-dev qt6-base-dev-tools qt6-tools-dev qt6-tools-dev-tools qt6-l10n-tools
  qt6-translations-l10n libgl-dev
  xvfb xauth x11-apps imagemagick
  fonts-ipafont-gothic fonts-liberation2 fonts-dejavu-core
  python3 socat xdg-utils ccache
  clang libclang-rt-14-dev clazy gcovr
  dpkg-dev fakeroot lintian appstream
  libtomlplusplus-dev
  pybind11-dev python3-pybind11 python3-pytest
)

missing=()
for p in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
SUDO=""
[ "$(id -u)" -ne 0 ] && SUDO="sudo"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
