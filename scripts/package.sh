#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Builds the Debian package of Sorano from the committed state (HEAD) in a clean copy, so that
# neither the build trees of the repository nor uncommitted changes get into it, puts the .deb
# with its .changes and .buildinfo into dist/ and checks them with lintian, desktop-file-validate
# and appstreamcli. Installs the packages it needs (through sudo when not run as root).
#
#   scripts/package.sh            package HEAD
#   SORANO_PACKAGE_KEEP=1 ...     keep the build folder and say where it is
#   SORANO_PACKAGE_JOBS=2 ...     parallel build jobs (default: one per core)
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(pwd)

sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"

# Libraries and tools of the build, then the packaging tools.
scripts/install-deps.sh
tools=(debhelper dpkg-dev fakeroot lintian desktop-file-utils appstream)
missing=()
for p in "${tools[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update -q
  $sudo apt-get install -y -q --no-install-recommends "${missing[@]}"
fi

if [ -n "$(git status --porcelain --untracked-files=no)" ]; then
  echo "Note: uncommitted changes are not packaged; the package is built from HEAD $(git rev-parse --short HEAD)." >&2
fi

version=$(dpkg-parsechangelog -S Version)
work=$(mktemp -d "${TMPDIR:-/tmp}/sorano-package.XXXXXX")
if [ -z "${SORANO_PACKAGE_KEEP:-}" ]; then
  trap 'rm -rf "$work"' EXIT
fi
src="$work/sorano-$version"
mkdir -p "$src"
git archive --format=tar HEAD | tar -x -C "$src"

(cd "$src" && dpkg-buildpackage -us -uc -b -J"${SORANO_PACKAGE_JOBS:-auto}")

mkdir -p dist
arch=$(dpkg-architecture -qDEB_HOST_ARCH)
changes="sorano_${version}_${arch}.changes"
rm -f dist/sorano_* dist/sorano-dbgsym_*
# Everything the .changes lists (the package and its debug symbols), so that lintian finds it.
cp "$work"/*_"$version"_*.deb "$work/$changes" "$work"/sorano_"$version"_*.buildinfo dist/
deb=$(ls dist/sorano_"$version"_"$arch".deb)
echo
echo "Package: $deb ($(du -h "$deb" | cut -f1))"

# The checks print what they find; a finding does not stop the script, the summary says it.
status=0
echo
echo "== lintian"
lintian --info "dist/$changes" || status=1
# The desktop files as the package holds them.
dpkg-deb -x "$deb" "$work/unpacked"
echo "== desktop-file-validate"
desktop-file-validate "$work"/unpacked/usr/share/applications/*.desktop || status=1
echo "== appstreamcli validate --no-net"
appstreamcli validate --no-net "$work"/unpacked/usr/share/metainfo/*.metainfo.xml || status=1
[ -n "${SORANO_PACKAGE_KEEP:-}" ] && echo "Build folder kept: $work"
echo
if [ $status -eq 0 ]; then
  echo "Install with: sudo apt-get install ./$deb"
else
  echo "A check failed: see above." >&2
fi
exit $status
