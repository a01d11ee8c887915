#!/usr/bin/env bash
# Makes the Wine prefix that the runs of the tests are copies of, where it is missing, and prints its folder: no
# window, no crash dialog, no debugger.
set -euo pipefail
. "$(dirname "$(realpath "$0")")/wine-environment.sh"

template=${QUORIL_WINE_TEMPLATE:-${XDG_CACHE_HOME:-$HOME/.cache}/quoril/wine-template}
mkdir -p "$(dirname "$template")"
exec 9>"$template.lock"
flock 9
if [ ! -f "$template/system.reg" ]; then
  rm -rf "$template.new"
  export WINEPREFIX=$template.new
  reg() { timeout 60 wine reg add "$@" /f </dev/null >/dev/null 2>&1; }
  timeout 180 wineboot -i </dev/null >/dev/null 2>&1 9>&-
  {
    reg 'HKCU\Software\Wine\Drivers' /v Graphics /d null
    reg 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0
    reg 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' /v Debugger /d false
    timeout 60 wineserver -w
  } 9>&-
  mv "$template.new" "$template"
fi
echo "$template"
