#!/usr/bin/env bash
# The whole life of an instance on the live machine, with the real programs under Wine: wine-life.sh FOLDER, where
# quorilctl.exe and quoril-emulator.exe lie. Ends with "passed" as its last line.
set -euo pipefail
bin=$(realpath "$1")
. "$(dirname "$(realpath "$0")")/wine-machine.sh"
keep_server
printf 'type = quoril_64\r\nhome = C:\\quoril\r\nsession.log = licence.log\r\n' >"$home/licence.cfg"
printf 'type = quoril_64\r\nhome = C:\\quoril\r\ndepends = LICENCE\r\nsession.log = diana.log\r\nram.size = 512\r\n' \
  >"$home/diana.cfg"

# expect TEXT COMMAND...: the command succeeds and its output has the text.
expect() {
  local text=$1 output
  shift
  output=$(ctl "$@") || { echo "quorilctl $* failed: $output" >&2; exit 1; }
  grep -qF -- "$text" <<<"$output" || { echo "quorilctl $*: no \"$text\" in: $output" >&2; exit 1; }
}

for name in LICENCE DIANA; do
  expect "$name" install "$name" --config "C:\\quoril\\${name,,}.cfg" --executable 'C:\quoril\quoril-emulator.exe'
done
expect DIANA list
expect quoril_64 list
expect 512 show DIANA
expect '"stopped"' --json status DIANA
ctl start DIANA # which starts LICENCE first
expect '"running"' --json status DIANA
expect '"running"' --json status LICENCE
expect 'Start of session: DIANA' logs DIANA
ctl set-start-type DIANA automatic
expect '"automatic"' --json status DIANA
ctl report DIANA --output "Z:${home//\//\\}\\report.txt"
[ -s "$home/report.txt" ] || { echo "The report is empty." >&2; exit 1; }
ctl stop DIANA
expect '"stopped"' --json status DIANA
ctl remove --yes DIANA
if grep -q DIANA <<<"$(ctl list --names)"; then
  echo "DIANA is still listed." >&2
  exit 1
fi
echo passed
