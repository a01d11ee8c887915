#!/usr/bin/env bash
# Measures quorilctl as a whole process beside its peers, all in one run: the best of some runs of each in milliseconds, and
# how many times as long as quorilctl the peer takes. A peer that is missing is left out.
#
#   scripts/bench-quorilctl.sh [PROGRAM]     PROGRAM is build/release/bin/quorilctl if not given
#
#   RUNS=7          runs of each command
#   MEGABYTES=256   size of the emulator's log
#   INSTANCES=10000 instances of the machine that is listed
#   QUORIL_REAL_DATA  folder with System.evtx.xz, without which no event log is measured
set -euo pipefail
cd "$(dirname "$0")/.."
program=$(realpath "${1:-build/release/bin/quorilctl}")
runs=${RUNS:-7} megabytes=${MEGABYTES:-256} instances=${INSTANCES:-10000}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# best COMMAND...: the best time of the command in microseconds.
best()
{
    local least=0 begin took run
    for ((run = 0; run <= runs; ++run)); do
        begin=${EPOCHREALTIME/[.,]/}
        "$@" >/dev/null 2>&1 || { echo "failed: $*" >&2; return 1; }
        took=$((${EPOCHREALTIME/[.,]/} - begin))
        # The first run only warms the cache.
        if [ "$run" -eq 1 ] || { [ "$run" -gt 1 ] && [ "$took" -lt "$least" ]; }; then
            least=$took
        fi
    done
    echo "$least"
}

own=0
# measure WHAT COMMAND...: a row of the table; the ratio is to the last row of quorilctl.
measure()
{
    local what=$1 took
    shift
    command -v "$1" >/dev/null || { echo "| $what | $(basename "$1") is missing | |"; return; }
    took=$(best "$@")
    [ "$1" = "$program" ] && own=$took
    awk -v what="$what" -v took="$took" -v own="$own" \
        'BEGIN { printf "| %s | %.1f | %.2f |\n", what, took / 1000, took / own }'
}

# A .reg text of so many instances with settings and devices.
write_instances()
{
    printf 'Windows Registry Editor Version 5.00\n\n'
    awk -v count="$instances" 'BEGIN {
        services = "HKEY_LOCAL_MACHINE\\SYSTEM\\ControlSet001\\Services\\"
        split("session\\log ram\\size cpu\\ace_enable rom\\container toy\\container", settings, " ")
        split("pka_0 pkb_0 dua xqa", devices, " ")
        for (i = 0; i < count; ++i) {
            key = services sprintf("BENCH%05d", i)
            printf "[%s]\n\"Group\"=\"TargetPlatformEmulator\"\n\"ImagePath\"=\"C:\\\\q\\\\emulator.exe\"\n", key
            printf "[%s\\Parameters]\n\"TargetPlatformEmulator\"=\"quoril_64\"\n\"Home\"=\"C:\\\\q\"\n", key
            for (s = 1; s <= 5; ++s)
                printf "[%s\\Parameters\\%s\\0]\n\"Value\"=\"setting.txt\"\n", key, settings[s]
            for (d = 1; d <= 4; ++d) {
                printf "[%s\\Parameters\\%s]\n\"Class\"=\"virtual_scsi_disk\"\n", key, devices[d]
                for (u = 0; u < 4; ++u)
                    printf "[%s\\Parameters\\%s\\container\\%d]\n\"Value\"=\"C:\\\\disk.vdisk\"\n", key, devices[d], u
            }
        }
    }'
}

"$program" machine create "$folder/machine"
write_instances >"$folder/instances.reg"
"$program" --machine "$folder/machine" machine import "$folder/instances.reg"
hive=$folder/machine/Windows/System32/config/SYSTEM
python3 bench/make_emulator_log.py "$folder/emulator.log" "$megabytes"
iconv -f UTF-16LE -t UTF-8 "$folder/emulator.log" >"$folder/emulator-utf8.log"

echo "$(nproc) processors, load $(cut -d ' ' -f 1-3 /proc/loadavg), best of $runs runs"
echo
echo "| command | ms | times quorilctl |"
echo "|---|---|---|"
measure 'start-up: `quorilctl --help`' "$program" --help
measure 'start-up: `bash --version`' bash --version
measure "\`quorilctl log --summary\`, $megabytes MB" "$program" log --summary "$folder/emulator.log"
measure '`wc -l` of the same file' wc -l "$folder/emulator.log"
measure '`lnav -n`, the same text as UTF-8' lnav -n -q "$folder/emulator-utf8.log"
measure "\`quorilctl list\`, $instances instances with devices" "$program" --machine "$folder/machine" list
measure '`hivexml` of the same hive' hivexml "$hive"
if [ -n "${QUORIL_REAL_DATA:-}" ]; then
    xz -dc "$QUORIL_REAL_DATA/System.evtx.xz" >"$folder/System.evtx"
    measure '`quorilctl events --summary`, real System.evtx' "$program" events --summary "$folder/System.evtx"
    measure '`evtxexport` of the same file' evtxexport "$folder/System.evtx"
    measure '`quorilctl --json events`, whole' "$program" --json events "$folder/System.evtx"
    measure '`evtxexport` of the same file' evtxexport "$folder/System.evtx"
fi
