#!/usr/bin/env bash
# Makes build/QuorilServicesManager-<version>-windows.zip and the installer .msi of the same name. The same sources and
# tools give the same bytes: files are sorted and carry the time of the last commit.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh windows
QUORIL_QT_MINGW=$(scripts/qt-windows.sh)
export QUORIL_QT_MINGW
# No time but the commit's, in the archive and in the resources of the programs.
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct)}
export SOURCE_DATE_EPOCH QT_RCC_SOURCE_DATE_OVERRIDE=$SOURCE_DATE_EPOCH LC_ALL=C TZ=UTC
cmake --preset windows -Wno-dev >/dev/null
cmake --build --preset windows --target quoril_release

version=$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
name=QuorilServicesManager-$version-windows
stage=build/release/$name
scripts/stage-windows.sh build/windows/bin "$stage"
scripts/package-msi.sh "$stage" "$version" "build/$name.msi"

archive=$PWD/build/$name.zip
rm -f "$archive"
(cd build/release && find "$name" -type f | sort | zip -X -q -9 "$archive" -@)
sha256sum "$archive" "build/$name.msi"
