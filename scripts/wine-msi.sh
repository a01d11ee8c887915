#!/usr/bin/env bash
# The life of the installer under Wine: wine-msi.sh FOLDER, where the programs were built. An older version is installed
# silently, this one over it, and all of it removed. Ends with "passed" as its last line.
set -euo pipefail
bin=$(realpath "$1")
scripts=$(dirname "$(realpath "$0")")
. "$scripts/wine-environment.sh"
work=$(mktemp -d "${TMPDIR:-/tmp}/quoril-msi-life.XXXXXX")
trap 'end_copy; rm -rf "$work"' EXIT
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' "$scripts/../CMakeLists.txt")
export SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-1700000000}
"$scripts/stage-windows.sh" "$bin" "$work/stage"
"$scripts/package-msi.sh" "$work/stage" 0.9.0 "$work/old.msi"
"$scripts/package-msi.sh" "$work/stage" "$version" "$work/new.msi"
"$scripts/package-msi.sh" "$work/stage" "$version" "$work/again.msi"
cmp "$work/new.msi" "$work/again.msi"
[ "$(msiinfo export "$work/new.msi" Shortcut | grep -c 'Entry')" -eq 2 ] || { echo "Not two entries for the start menu." >&2; exit 1; }
copy_prefix
keep_server

fail() { echo "$*" >&2; exit 1; }
wine_run() { timeout 120 wine "$@" </dev/null | tr -d '\r'; }
# installer ARGUMENT...: runs it without a window; its status is the installer's own.
installer() { timeout 240 wine msiexec "$@" /qn </dev/null; }
# all_that_is: every file and folder of the disk, the path, and what programs the system lists.
all_that_is() {
  find "$WINEPREFIX/drive_c" \( -path '*/windows/temp' -o -path '*/Temp' \) -prune -o -print |
    grep -v '/windows/Installer$' | sort # the system's own folder, empty
  wine_run reg query 'HKLM\System\CurrentControlSet\Control\Session Manager\Environment' | sed 's/;*$//'
  wine_run reg query 'HKLM\Software' /s | grep -i quoril || true
}
listed() { wine_run reg query 'HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall' /s; }
# is_there VERSION: the program runs by the path and from where it lies; the system lists one product, of that version.
is_there() {
  local folder='C:\Program Files\Quoril Services Manager'
  wine_run "$folder\\quorilctl.exe" --version | grep -F "$version" >/dev/null || fail "quorilctl doesn't run from its folder."
  # Wine leaves the separator of the entry that an upgrade removes, and its cmd looks no further than two of them.
  wine_run cmd /c 'path %PATH:;;=;%&quorilctl --version' | grep -F "$version" >/dev/null || fail "quorilctl is not on the path."
  [ "$(listed | grep -c 'Quoril Services Manager')" -ge 1 ] || fail "The system doesn't list the product."
  [ "$(listed | grep 'DisplayVersion' | grep -cF "$1")" -eq 1 ] || fail "The system doesn't list version $1."
}

all_that_is >"$work/before"
installer /i "Z:${work//\//\\}\\old.msi"
is_there 0.9.0
installer /i "Z:${work//\//\\}\\new.msi"
is_there "$version"
[ "$(listed | grep -cF 0.9.0)" -eq 0 ] || fail "The older version is still listed."
! installer /i "Z:${work//\//\\}\\old.msi" || fail "An older version was installed over a newer one."
is_there "$version"
installer /x "Z:${work//\//\\}\\new.msi"
all_that_is >"$work/after"
diff "$work/before" "$work/after" || fail "Something is left."
echo passed
