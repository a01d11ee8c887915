#!/usr/bin/env bash
# Takes the pictures of docs/pictures anew, on a fresh sample machine.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset release -Wno-dev >/dev/null
cmake --build --preset release --target quoril-pictures quoril_help
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
XDG_DATA_HOME=$folder QT_QPA_PLATFORM=offscreen LC_ALL=C.UTF-8 \
  build/release/bin/quoril-pictures "$folder/pictures"
mkdir -p docs/pictures
cp "$folder"/pictures/*.png docs/pictures/
pdftoppm -png -r 80 -singlefile "$folder/pictures/page.pdf" docs/pictures/page
