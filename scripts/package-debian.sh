#!/usr/bin/env bash
# Makes the Debian packages of the commit that is checked out, from its files alone, looks at them with lintian, and
# prints where they are: build/packages.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh packages
out=$PWD/build/packages
rm -rf "$out"
mkdir -p "$out/source"
git archive HEAD | tar -x -C "$out/source"
cd "$out/source"
mv packaging/debian debian

version=$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
SOURCE_DATE_EPOCH=$(git -C "$out/../.." log -1 --format=%ct)
export SOURCE_DATE_EPOCH
cat >debian/changelog <<END
quoril-services-manager ($version) bookworm; urgency=medium

  * Release $version.

 -- $(sed -n 's/^Maintainer: //p' debian/control)  $(date -u -R -d "@$SOURCE_DATE_EPOCH")
END
dpkg-buildpackage --build=binary --no-sign >"$out/build.txt" 2>&1 || { tail -n 40 "$out/build.txt" >&2; exit 1; }
cd "$out"
find source/debian -name '*.desktop' -exec desktop-file-validate {} +
find source/debian -name '*.metainfo.xml' -exec appstreamcli validate --no-net {} +
rm -rf source
lintian --fail-on error,warning --display-info ./*.changes
ls "$out"/*.deb
