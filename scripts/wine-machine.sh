# Sourced by the scripts that prove something with the real programs under Wine, after bin is set to their folder: a copy
# of the template prefix that goes at the end, a folder C:\quoril in it, which is home here, with the emulator, and
# ctl ARGUMENT..., which runs quorilctl. keep_server comes before the first service;
# end_after may be defined anew and runs once Wine has ended.
# shellcheck shell=bash
export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=" WINEARCH=win64 LC_ALL=C.UTF-8
unset DISPLAY WAYLAND_DISPLAY QUORIL_MACHINE

template=$("$(dirname "$(realpath "${BASH_SOURCE[0]}")")/wine-template.sh")
WINEPREFIX=$(mktemp -d "${TMPDIR:-/tmp}/quoril-wine.XXXXXX")
export WINEPREFIX
end_after() { :; }
trap 'wineserver -k || true; end_after; rm -rf "$WINEPREFIX"' EXIT
cp -a --reflink=auto "$template/." "$WINEPREFIX"

home=$WINEPREFIX/drive_c/quoril
mkdir "$home"
cp "$bin/quoril-emulator.exe" "$home"

# Without it services die with the last program.
keep_server() { wineserver -p300 </dev/null >/dev/null 2>&1; }
ctl() { timeout 120 wine "$bin/quorilctl.exe" "$@" </dev/null | tr -d '\r'; }
