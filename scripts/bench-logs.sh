#!/usr/bin/env bash
# Measures the log readers as whole processes beside their peers and the log panel, all in one run, files in the
# cache: the median of some runs of each, how many times as long as the peer named first it takes, and the peak
# memory beside the file's size. The peers are installed if they are missing.
#
#   scripts/bench-logs.sh
#
#   RUNS=5               runs of each command
#   SIZES="100 300 1000" sizes of the emulator's log in MB
#   QUORIL_REAL_DATA     folder with System.evtx.xz, without which no event log is measured
set -euo pipefail
cd "$(dirname "$0")/.."
runs=${RUNS:-5}

missing=()
for package in lnav libevtx-utils time; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
done
if [ ${#missing[@]} -gt 0 ]; then
    root=()
    [ "$(id -u)" -eq 0 ] || root=(sudo)
    "${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
cmake --preset bench -Wno-dev >/dev/null
cmake --build --preset bench --target load_emulator_log read_event_log panel >/dev/null
bin=build/bench/bin
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# median COMMAND...: sets elapsed (microseconds), processor (seconds) and memory (KB) to the medians of the runs.
median()
{
    "$@" >/dev/null 2>&1 || { echo "failed: $*" >&2; return 1; } # warms the cache
    local run begin
    for ((run = 0; run < runs; ++run)); do
        begin=${EPOCHREALTIME/[.,]/}
        command time -f '%U %S %M' -o "$folder/time" "$@" >/dev/null 2>&1
        echo "$((${EPOCHREALTIME/[.,]/} - begin)) $(cat "$folder/time")" >>"$folder/times"
    done
    local middle=$(((runs + 1) / 2))
    elapsed=$(awk '{ print $1 }' "$folder/times" | sort -n | sed -n "${middle}p")
    processor=$(awk '{ print $2 + $3 }' "$folder/times" | sort -n | sed -n "${middle}p")
    memory=$(awk '{ print $4 }' "$folder/times" | sort -n | sed -n "${middle}p")
    rm "$folder/times"
}

# row WHAT BYTES COMMAND...: a row of the table. A first row sets what the others are compared with.
first=
row()
{
    local what=$1 bytes=$2
    shift 2
    median "$@"
    first=${first:-$elapsed}
    awk -v what="$what" -v e="$elapsed" -v p="$processor" -v first="$first" -v m="$memory" -v bytes="$bytes" 'BEGIN {
        printf "| %s | %.1f | %.2f | %.2f | %.0f | %.2f |\n", what, e / 1000, p, e / first, m / 1024, m * 1024 / bytes }'
}

head_of_table()
{
    first=
    echo
    echo "| command | ms | processor s | times the first | peak MB | peak by file |"
    echo "|---|---|---|---|---|---|"
}

echo "$(nproc) processors, load $(cut -d ' ' -f 1-3 /proc/loadavg), medians of $runs runs"
for size in ${SIZES:-100 300 1000}; do
    log=$folder/panel.log
    python3 bench/make_emulator_log.py "$log" "$size"
    bytes=$(stat -c %s "$log")
    # The peer knows no 16-bit text, so it gets the same lines in 8 bits and half the bytes.
    iconv -f UTF-16LE -t UTF-8 "$log" >"$folder/narrow.log"
    head_of_table
    row "\`wc -l\`, $size MB" "$bytes" wc -l "$log"
    row "load of the emulator log" "$bytes" "$bin/load_emulator_log" "$log"
    row "\`lnav -n\` with a filter, as UTF-8" "$bytes" lnav -n -q -c ':filter-in started' "$folder/narrow.log"
done

if [ -n "${QUORIL_REAL_DATA:-}" ]; then
    xz -dc "$QUORIL_REAL_DATA/System.evtx.xz" >"$folder/System.evtx"
    bytes=$(stat -c %s "$folder/System.evtx")
    head_of_table
    row "reader of .evtx, real System log" "$bytes" "$bin/read_event_log" "$folder/System.evtx"
    row "\`evtxexport\`" "$bytes" evtxexport "$folder/System.evtx"
fi

export XDG_RUNTIME_DIR=$folder
# 1,000,000 rows: 206 bytes a line on average.
python3 bench/make_emulator_log.py "$folder/panel.log" "${PANEL_MEGABYTES:-206}"
for ((run = 0; run < runs; ++run)); do
    "$bin/panel" "$folder" | sed "s/^/$run /"
done >"$folder/panel.txt"
echo
echo "| panel of an emulator log | |"
echo "|---|---|"
cut -d ' ' -f 2- "$folder/panel.txt" | awk -v runs="$runs" '
    { number = 0
      for (i = 1; i <= NF; ++i) if ($i ~ /^-?[0-9.]+$/) { number = $i; $i = "#" }
      if (!($0 in n)) order[++kinds] = $0
      values[$0, ++n[$0]] = number }
    END {
      for (k = 1; k <= kinds; ++k) {
        name = order[k]; count = n[name]
        for (i = 1; i <= count; ++i) for (j = i + 1; j <= count; ++j)
          if (values[name, j] < values[name, i]) { t = values[name, i]; values[name, i] = values[name, j]; values[name, j] = t }
        unit = name; sub(/.*#/, "", unit); label = name; sub(/ *#.*/, "", label)
        printf "| %s | %s%s |\n", label == "" ? "rows" : label, values[name, int((count + 1) / 2)], label == "" ? "" : unit } }'
