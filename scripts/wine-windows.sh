#!/usr/bin/env bash
# The windows of the programs for Windows under Wine, on a screen of its own: wine-windows.sh FOLDER [PICTURES]. FOLDER
# is where the programs lie. The console stands open over the live machine with an instance that runs; QuorilSetup
# installs another by its dialogs; the console hears of that by the announcement. With PICTURES, a folder, the windows
# are taken there as windows-*.png, with ImageMagick. Ends with "passed" as its last line.
set -euo pipefail
bin=$(realpath "$1")
pictures=${2:+$(realpath "$2")}
. "$(dirname "$(realpath "$0")")/wine-machine.sh"
screen=
end_after() { [ -z "$screen" ] || kill "$screen"; }
exec 8>"$WINEPREFIX/display"
Xvfb -displayfd 8 -screen 0 1400x860x24 >/dev/null 2>&1 &
screen=$!
exec 8>&-
until [ -s "$WINEPREFIX/display" ]; do sleep 0.1; done
DISPLAY=:$(cat "$WINEPREFIX/display")
export DISPLAY
openbox >/dev/null 2>&1 &
registry() { timeout 60 wine reg "$@" /f </dev/null >/dev/null 2>&1; }
registry delete 'HKCU\Software\Wine\Drivers' /v Graphics
for font in Tahoma 'MS Shell Dlg' 'MS Shell Dlg 2' 'Segoe UI'; do # which Debian doesn't have
  registry add 'HKCU\Software\Wine\Fonts\Replacements' /v "$font" /d 'DejaVu Sans'
done
timeout 60 wineserver -w
keep_server

for name in CERES IRIS; do
  printf 'type = quoril_64\r\nhome = C:\\quoril\r\nsession.log = %s.log\r\nram.size = 512\r\n' $name >"$home/$name.cfg"
done
picture() { [ -z "$pictures" ] || import -window root "$pictures/windows-$1.png"; }
# seen PROGRAM TITLE: waits until the window is there and has the focus, and gives it a moment to be painted.
seen() {
  local tries active shown
  for ((tries = 0; tries < 300; ++tries)); do
    active=$(xdotool getactivewindow 2>/dev/null || true)
    # A window may be gone before it is asked.
    shown=$([ -z "$active" ] || xprop -id "$active" WM_CLASS WM_NAME 2>/dev/null || true)
    if grep -q "\"$1.exe\"" <<<"$shown" && grep -q "= \"$2" <<<"$shown"; then
      sleep 2
      return
    fi
    sleep 0.2
  done
  echo "$1 shows no window \"$2\"." >&2
  exit 1
}

ctl install CERES --config 'C:\quoril\CERES.cfg' --executable 'C:\quoril\quoril-emulator.exe'
ctl start CERES
timeout 240 wine "$bin/QuorilManager.exe" </dev/null >/dev/null 2>&1 &
console=$!
seen quorilmanager 'Select QUORIL Service'
xdotool key Down Down # the machine, and CERES below it
seen quorilmanager CERES
picture console

timeout 240 wine "$bin/QuorilSetup.exe" --product quoril_64 --config 'C:\quoril\IRIS.cfg' \
  --executable 'C:\quoril\quoril-emulator.exe' </dev/null >"$home/setup.txt" 2>&1 &
setup=$!
seen quorilsetup 'Update / Install service dialog'
xdotool key Tab Tab space
seen quorilsetup 'Service Install Dialog'
picture setup
xdotool type IRIS
sleep 1 # typed keys and single ones overtake each other
xdotool key Return
seen quorilsetup 'Quoril Services Manager'
xdotool key Return
seen quorilmanager 'Quoril Services Manager'
picture announcement
# QuorilSetup doesn't wait for the console's message box.
wait $setup
grep -q '^IRIS' "$home/setup.txt" || { echo "QuorilSetup: $(cat "$home/setup.txt")" >&2; exit 1; }
grep -q '^IRIS$' <<<"$(ctl list --names)" || { echo "IRIS is not listed." >&2; exit 1; }
xdotool key Return
sleep 1
xdotool key alt+F4
wait $console
echo passed
