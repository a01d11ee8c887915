#!/usr/bin/env bash
# Takes the pictures of docs/pictures again, each kind on a fresh sample machine: every window and dialog in English and
# German, in German, whose texts are the longest, at twice the size, and in a dark and a high-contrast theme.
#   PRESET=release    the build that they are taken of
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${PRESET:-release}
cmake --preset "$preset" -Wno-dev >/dev/null
cmake --build --preset "$preset" --target quoril-pictures quoril_help quoril_german
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
# A screen on which the windows have their room at twice the size, too.
cat >"$folder/screen.json" <<'END'
{"screens": [{"name": "wide", "x": 0, "y": 0, "width": 2560, "height": 1600,
              "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]}
END

# take KIND LOCALE SCALE [THEME]: the pictures of one kind, into docs/pictures/KIND.
take()
{
  XDG_DATA_HOME=$folder/$1-data QT_QPA_PLATFORM=offscreen:configfile=$folder/screen.json LC_ALL=$2 QT_SCALE_FACTOR=$3 \
    "build/$preset/bin/quoril-pictures" "$folder/$1" ${4:+"$4"}
  mkdir -p "docs/pictures/$1"
  cp "$folder/$1"/*.png "docs/pictures/$1/"
}
take . C.UTF-8 1
pdftoppm -png -r 80 -singlefile "$folder/page.pdf" docs/pictures/page
take german de_DE.UTF-8 1
take german-200 de_DE.UTF-8 2
take dark C.UTF-8 1 dark
take high-contrast C.UTF-8 1 high-contrast

{
  echo "# Pictures of all windows and dialogs"
  echo
  echo "Taken by \`scripts/pictures.sh\` off screen. \`errors\` shows an instance whose disk is missing; \`small\` is the main"
  echo "window at 800 by 600. Those of Windows are on the page about [building for it](../windows-build.md)."
  echo
  echo "| | English | German | German at 200 % | dark theme | high contrast |"
  echo "|---|---|---|---|---|---|"
  for picture in docs/pictures/german/*.png; do
    name=$(basename "$picture")
    echo "| ${name%.png} | ![]($name) | ![](german/$name) | ![](german-200/$name) | ![](dark/$name) | ![](high-contrast/$name) |"
  done
} >docs/pictures/README.md
