#!/usr/bin/env bash
# Installs what building and testing need, from Debian's packages. Run as root it installs what is
# missing; otherwise it prints the command to run and fails when a build tool is missing.
set -euo pipefail

build_pkgs=(cmake ninja-build g++ libgtest-dev libbenchmark-dev)
# Codec back-ends loaded at run time, and the independent readers the tests compare against.
test_pkgs=(libfaad-dev faad libopencore-amrnb-dev ffmpeg python3-mido midicsv python3-vobject tshark
           python3-lxml python3-gammu wireshark-common)
want=("${build_pkgs[@]}")
[ "${1:-}" = "--test" ] && want+=("${test_pkgs[@]}")
[ "${1:-}" = "--fuzz" ] && want+=(clang libclang-rt-14-dev)

missing=()
for p in "${want[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

if [ "$(id -u)" = 0 ]; then
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
else
  echo "Missing Debian packages: ${missing[*]}" >&2
  echo "Install them with: sudo apt-get install -y ${missing[*]}" >&2
  for p in "${missing[@]}"; do
    for b in "${build_pkgs[@]}"; do [ "$p" = "$b" ] && exit 1; done
  done
  echo "Going on without them; tests that need them will skip." >&2
fi
