#!/usr/bin/env bash
# Runs a program of Windows under Wine, for CTest: wine-run.sh program.exe [argument...]. Each run gets a copy of a
# template prefix of its own, so that no run sees what another left in the registry or among the services, and ends
# with all that it started.
#   QUORIL_WINE_TEMPLATE  the template, else wine-template in the user's cache; made where it is missing
#   QUORIL_WINE_SECONDS   the longest that a run may take, 300
#   QUORIL_WINE_PREFIX    a prefix to run in that stays, instead of a copy
set -euo pipefail

. "$(dirname "$(realpath "$0")")/wine-environment.sh"

output=
program=
end() {
  [ -z "$program" ] || kill "$program" || true
  rm -f "$output"
  end_copy
}
trap end EXIT

if [ -n "${QUORIL_WINE_PREFIX:-}" ]; then
  export WINEPREFIX=$QUORIL_WINE_PREFIX
else
  copy_prefix
  keep_server
fi

# The output goes through a file, since services that stay would keep a pipe open. It is passed on as it comes, so that it
# shows where a program hung.
output=$(mktemp "${TMPDIR:-/tmp}/quoril-wine-output.XXXXXX")
seconds=${QUORIL_WINE_SECONDS:-300}
timeout --kill-after=10 "$seconds" wine "$@" </dev/null >"$output" 2>&1 &
program=$!
tail -n +1 -s 0.1 -f --pid="$program" "$output" | sed -u 's/\r$//' &
reader=$!
code=0
wait "$program" || code=$?
program=
wait "$reader"
if [ "$code" -eq 124 ]; then
  echo "$1 was still running after $seconds seconds." >&2
elif [ "$code" -ne 0 ]; then
  echo "$1 ended with exit code $code." >&2
fi
exit "$code"
