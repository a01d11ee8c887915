#!/usr/bin/env bash
# Runs a program of Windows under Wine, for CTest: wine-run.sh program.exe [argument...]. Each run gets a copy of a
# template prefix of its own, so that no run sees what another left in the registry or among the services, and ends
# with all that it started.
#   QUORIL_WINE_TEMPLATE  the template, else wine-template in the user's cache; made where it is missing
#   QUORIL_WINE_SECONDS   the longest that a run may take, 580
#   QUORIL_WINE_PREFIX    a prefix to run in that stays, instead of a copy
set -euo pipefail

here=$(dirname "$(realpath "$0")")
export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=" WINEARCH=win64 LC_ALL=C.UTF-8
unset DISPLAY WAYLAND_DISPLAY

if [ -n "${QUORIL_WINE_PREFIX:-}" ]; then
  export WINEPREFIX=$QUORIL_WINE_PREFIX
else
  template=$("$here/wine-template.sh")
  WINEPREFIX=$(mktemp -d "${TMPDIR:-/tmp}/quoril-wine.XXXXXX")
  export WINEPREFIX
  trap 'wineserver -k || true; rm -rf "$WINEPREFIX"' EXIT
  cp -a --reflink=auto "$template/." "$WINEPREFIX"
  # Without it services die with the last program. It holds nothing of the caller's open.
  wineserver -p300 </dev/null >/dev/null 2>&1
fi

# A crash can show as success: what CTest reads in the output counts besides the exit code. The output takes the road
# over a file, since services that stay would keep a pipe open.
output=$(mktemp "${TMPDIR:-/tmp}/quoril-wine-output.XXXXXX")
exec 3<"$output"
set +e
timeout --kill-after=10 "${QUORIL_WINE_SECONDS:-580}" wine "$@" </dev/null >"$output" 2>&1
code=$?
rm -f "$output"
tr -d '\r' <&3
exit "$code"
