#!/usr/bin/env bash
# Installs the Debian packages the build and tests need, when any is missing.
set -euo pipefail
packages=(cmake g++ make pkg-config libgtest-dev libgmock-dev libfontconfig-dev fonts-dejavu-core nlohmann-json3-dev)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  sudo=""
  [ "$(id -u)" -eq 0 ] || sudo="sudo"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}"
fi
