#!/usr/bin/env bash
# Packs the programs for Windows into build/QuorilServicesManager-<version>-windows.zip. The same sources and tools
# give the same bytes: files are sorted and carry the time of the last commit.
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
bin=build/windows/bin
stage=build/release/$name
rm -rf "$stage"
mkdir -p "$stage/licences"

for program in QuorilManager QuorilSetup quorilctl quoril-emulator; do
  if [ -f "$bin/$program.exe" ]; then
    cp "$bin/$program.exe" "$stage/"
    x86_64-w64-mingw32-strip "$stage/$program.exe"
  fi
done
scripts/check-imports.sh "$stage"/*.exe
cp "$bin"/QuorilManagerLang*.dll "$bin"/QuorilManager*.hlp "$stage/"
sed 's/$/\r/' docs/readme-windows.txt >"$stage/README.txt"

# What is linked in: Qt with what it bundles, and the compiler's own libraries.
common=/usr/share/common-licenses
cp "$common/LGPL-3" "$common/GPL-3" "$common/GPL-2" "$stage/licences/"
cp /usr/share/doc/qt6-base-dev/copyright "$stage/licences/Qt.txt"
cp /usr/share/doc/g++-mingw-w64-x86-64-posix/copyright "$stage/licences/compiler.txt"
cp /usr/share/doc/mingw-w64-x86-64-dev/copyright "$stage/licences/mingw-w64.txt"
if [ -f /usr/share/doc/libcli11-dev/copyright ]; then
  cp /usr/share/doc/libcli11-dev/copyright "$stage/licences/CLI11.txt"
fi

archive=$PWD/build/$name.zip
rm -f "$archive"
find "$stage" -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +
(cd build/release && find "$name" -type f | sort | zip -X -q -9 "$archive" -@)
sha256sum "$archive"
