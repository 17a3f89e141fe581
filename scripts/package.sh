#!/usr/bin/env bash
# Builds the Debian package of Marrowvane from the same build tree as the
# tests (./build): marrowvane_<version>_<arch>.deb in ./build, then lists it.
# Set MV_LINTIAN=1 to have lintian check it as well.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
bash scripts/build.sh
(cd build && cpack -G DEB >/dev/null)
deb=$(ls -t build/marrowvane_*.deb | head -n 1)
echo "package: $deb"
dpkg-deb -I "$deb"
if [ "${MV_LINTIAN:-0}" = 1 ]; then
  lintian --fail-on error "$deb"
fi
