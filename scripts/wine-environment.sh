# Sourced by the scripts that run something under Wine.
# shellcheck shell=bash
export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml,winemenubuilder.exe=" WINEARCH=win64 LC_ALL=C.UTF-8
unset DISPLAY WAYLAND_DISPLAY

# copy_prefix: what runs from here on runs in a copy of the template prefix; end_copy, for the EXIT trap, ends and removes
# it if there is one.
copy=
copy_prefix() {
  local template
  template=$("$(dirname "$(realpath "${BASH_SOURCE[0]}")")/wine-template.sh")
  copy=$(mktemp -d "${TMPDIR:-/tmp}/quoril-wine.XXXXXX")
  export WINEPREFIX=$copy
  cp -a --reflink=auto "$template/." "$copy"
}
end_copy() {
  if [ -n "$copy" ]; then
    wineserver -k || true
    rm -rf "$copy"
  fi
}

# Without it services die with the last program. It holds nothing of the caller's open.
keep_server() { wineserver -p300 </dev/null >/dev/null 2>&1; }
