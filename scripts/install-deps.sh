#!/usr/bin/env bash
# Installs the Debian packages the build and tests need, when any is missing.
# With --browser it also installs Debian's chromium and the npm packages the
# browser-labelled tests drive it with (tests/browser/package.json).
set -euo pipefail
packages=(cmake g++ make pkg-config libgtest-dev libgmock-dev libfontconfig-dev fonts-dejavu-core nlohmann-json3-dev)
browser=0
[ "${1:-}" = "--browser" ] && browser=1
if [ $browser -eq 1 ]; then
  packages+=(chromium fonts-liberation)
  # A machine may carry its own Node.js build; Debian's is asked for only
  # when there is none.
  command -v npm >/dev/null || packages+=(nodejs npm)
fi
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
if [ ${#missing[@]} -gt 0 ]; then
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}"
fi
root="$(cd "$(dirname "$0")/.." && pwd)"
if [ $browser -eq 1 ] && [ -f "$root/tests/browser/package.json" ]; then
  # The browser is Debian's: the npm packages must not fetch one of their own.
  (cd "$root/tests/browser" && PUPPETEER_SKIP_DOWNLOAD=1 PLAYWRIGHT_SKIP_BROWSER_DOWNLOAD=1 \
     npm ci --no-audit --no-fund --loglevel=error)
fi
