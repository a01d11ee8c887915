#!/usr/bin/env bash
# Puts what a release for Windows holds into a folder: stage-windows.sh PROGRAMS FOLDER, with the folder where the programs
# were built. What lies in FOLDER already is gone then. All files carry SOURCE_DATE_EPOCH as their time.
set -euo pipefail
bin=$(realpath "$1")
mkdir -p "$2"
stage=$(realpath "$2")
cd "$(dirname "$0")/.."
rm -rf "${stage:?}"
mkdir -p "$stage/licences" "$stage/docs" "$stage/samples"

for program in QuorilManager QuorilSetup quorilctl quoril-emulator; do
  cp "$bin/$program.exe" "$stage/"
  x86_64-w64-mingw32-strip "$stage/$program.exe"
done
scripts/check-imports.sh "$stage"/*.exe
cp "$bin"/QuorilManagerLang*.dll "$bin"/QuorilManager*.hlp "$stage/"
# Texts that Windows' own programs open.
sed 's/$/\r/' docs/readme-windows.txt >"$stage/README.txt"
sed 's/$/\r/' docs/windows-checklist.md >"$stage/windows-checklist.md"
sed 's/$/\r/' packaging/windows/check-windows.ps1 >"$stage/check-windows.ps1"
sed 's/$/\r/' LICENSE >"$stage/LICENSE.txt"
for page in administering fleet instances operating quorilctl windows; do
  sed 's/$/\r/' "docs/$page.md" >"$stage/docs/$page.md"
done
# Not for Windows' programs: whoever manages many machines from Linux takes these as they are.
cp -r samples/fleet "$stage/samples/"

# What is linked in: Qt with what it bundles, its German texts, the command line's parser, and the compiler's own libraries.
common=/usr/share/common-licenses
cp "$common/LGPL-3" "$common/GPL-3" "$common/GPL-2" "$stage/licences/"
copyright() { cp "/usr/share/doc/$1/copyright" "$stage/licences/$2.txt"; }
copyright qt6-base-dev Qt
copyright qt6-translations-l10n Qt-translations
copyright g++-mingw-w64-x86-64-posix compiler
copyright mingw-w64-x86-64-dev mingw-w64
copyright libcli11-dev CLI11
find "$stage" -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +
