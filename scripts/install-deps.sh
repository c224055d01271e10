#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the demo need. Idempotent: packages that are
# already present are skipped, so a warm machine pays only for a dpkg query.
set -euo pipefail

packages=(
  # build
  cmake ninja-build ccache g++ clang pkg-config
  # foundation and host side
  zlib1g-dev libcurl4-openssl-dev nlohmann-json3-dev libpng-dev libjpeg-dev libdeflate-dev
  # tests, benchmarks, fuzzing
  libgtest-dev libgmock-dev libbenchmark-dev libclang-rt-14-dev python3 nodejs
  # compiled-in icons: SVG sources rendered to PNG at build time
  librsvg2-bin
  # AppKit backend on Linux, real windows under a virtual display
  gnustep-devel gobjc++ xvfb xdotool x11-utils imagemagick fontconfig
  fonts-liberation fonts-dejavu-core
  # the Windows build (MinGW-w64, zlib for it) and Wine to run it
  g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64 libz-mingw-w64-dev wine wine64
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

if [ "$(id -u)" -ne 0 ]; then
  echo "install-deps: need root to install: ${missing[*]}" >&2
  exit 1
fi

export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
apt-get install -y -qq --no-install-recommends "${missing[@]}"
