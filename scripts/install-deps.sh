#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the demo need, if any are missing.
# The desktop tests validate the entries (desktop-file-utils, appstream), build the packages
# (dpkg-dev for dpkg-shlibdeps, file) and check them (lintian), and run the Nautilus extension
# (python3) and the KDE plugin through KDE Purpose. A share test mounts a FUSE file system whose
# reads never answer (fuse3, python3-fusepy). A share test reads the sheet over the accessibility
# bus as a screen reader does (at-spi2-core, python3-pyatspi).
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  qt6-base-dev qt6-svg-dev libqt6svg6 qt6-qpa-plugins
  qt6-wayland weston                   # the sheet on a Wayland session (tested on a headless Weston)
  libx11-dev                           # the first-paint benchmark watches the X screen
  libplist-dev libplist-utils
  libfontconfig-dev                    # its configuration loads while Qt connects to the display
  googletest libgtest-dev libgmock-dev
  dbus dbus-daemon dbus-bin
  fonts-liberation2 fonts-dejavu-core  # the pinned system font (Liberation Sans); fallback glyphs
  fonts-noto-core fonts-cantarell      # desktop UI fonts the sheet's titles are measured in
  xvfb xauth xdotool x11-utils
  desktop-file-utils appstream dpkg-dev file python3
  gdb
  lintian                                             # the package test
  libkf5purpose-dev libkf5purpose-bin qtbase5-dev     # the KDE Share-menu plugin (Qt 5) and its test
  fuse3 python3-fusepy
  at-spi2-core python3-pyatspi                        # the screen-reader client of the sheet test
)
# scripts/fuzz.sh needs clang and its libFuzzer runtime.
if [ "${1:-}" = "fuzz" ]; then packages+=(clang libclang-rt-14-dev); fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
echo "Installing: ${missing[*]}"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
