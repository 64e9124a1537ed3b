#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the program need.
# Idempotent: when every package is present it returns at once.
set -euo pipefail

packages=(
  g++ cmake ninja-build pkg-config
  qt6-base-dev qt6-svg-dev libqcustomplot-dev
  libpugixml-dev libsqlite3-dev
  postgresql libpq-dev clickhouse-server clickhouse-client libcurl4-openssl-dev curl
  libgtest-dev libgmock-dev libbenchmark-dev
  clang libclang-rt-dev
  xvfb xauth
  tango-icon-theme
  fonts-liberation poppler-utils
  qt6-translations-l10n
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -q
$sudo apt-get install -y -q --no-install-recommends "${missing[@]}"
