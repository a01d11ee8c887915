# Sourced by the scripts that prove something with the real programs under Wine, after bin is set to their folder: a copy
# of the template prefix that goes at the end, a folder C:\quoril in it, which is home here, with the emulator, and
# ctl ARGUMENT..., which runs quorilctl. keep_server comes before the first service;
# end_after may be redefined and runs once Wine has ended.
# shellcheck shell=bash
. "$(dirname "$(realpath "${BASH_SOURCE[0]}")")/wine-environment.sh"
unset QUORIL_MACHINE

end_after() { :; }
trap 'end_copy; end_after' EXIT
copy_prefix

home=$WINEPREFIX/drive_c/quoril
mkdir "$home"
cp "$bin/quoril-emulator.exe" "$home"

ctl() { timeout 120 wine "$bin/quorilctl.exe" "$@" </dev/null | tr -d '\r'; }
