#!/usr/bin/env bash
# Runs the tests that docs/reliability.md names and prints their table for docs/measurements.md: a line for each case, with the tests,
# the steps at which a fault was put in, and the seconds that they took. Ends with 1 if a test failed or none ran.
#
#   scripts/prove-reliability.sh [FOLDER]     FOLDER holds the programs, build/dev/bin if not given
set -euo pipefail
cd "$(dirname "$0")/.."
programs=$(realpath "${1:-build/dev/bin}")
export QT_QPA_PLATFORM=offscreen
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
result=0

# prove CASE PROGRAM FILTER [PROGRAM FILTER]...
prove()
{
    local name=$1 tests=0 failed=0 steps=0 seconds=0 xml=$folder/result.xml
    shift
    while [ $# -gt 0 ]; do
        rm -f "$xml"
        timeout 300 "$programs/$1" --gtest_brief=1 --gtest_filter="$2" --gtest_output=xml:"$xml" \
            >"$folder/output" 2>&1 || { cat "$folder/output" >&2; failed=1; }
        local head
        head=$(grep -m1 '<testsuites ' "$xml" || true)
        local ran
        ran=$(grep -c '<testcase .*status="run" result="completed"' "$xml" || true)
        [ "$ran" -gt 0 ] || { echo "$1 has no test $2" >&2; failed=1; }
        tests=$((tests + ran))
        steps=$((steps + $(sed -n 's|.*name="steps" value="\([0-9]*\)".*|\1|p' "$xml" | paste -sd+ - | sed 's|^$|0|')))
        seconds=$(awk -v a="$seconds" -v b="$(sed 's/.* time="\([0-9.]*\)".*/\1/' <<<"$head")" 'BEGIN { print a + b }')
        shift 2
    done
    [ "$failed" -eq 0 ] || result=1
    printf '| %s | %d | %s | %.2f | %s |\n' "$name" "$tests" "$([ "$steps" -gt 0 ] && echo "$steps" || echo -)" \
        "$seconds" "$([ "$failed" -eq 0 ] && echo passed || echo FAILED)"
}

echo "| case | tests | steps | seconds | result |"
echo "|---|---|---|---|---|"
prove "a full disk at every write" platform_tests '*DiskFaults*.AFullDisk*' \
    core_tests 'ProblemReportTest.NeverCallsACutReportStored'
prove "a kill at every write" platform_tests '*DiskFaults*.AKilled*:SampleMachineFaults*' \
    formats_tests 'EvtAppender.EveryInterruptedAppend*'
prove "several programs change one tree" platform_tests \
    'HiveFileTest.LosesNoChange*:TreeRegistryTest.KeepsOpenKeys*:*.StartsOnceWhenMany*:SampleMachineTest.*'
prove "a process number used again" platform_tests '*.TakesNoOtherProcessForTheService:*.KnowsAServiceWhoseHostWasKilled'
prove "one unreadable service among many" core_tests 'ServiceCatalogue.ARefusedKey*' \
    ctl_tests 'CtlTest.SaysWhatIsWrong*'
prove "malicious files" formats_tests \
    'Regf.AHiveMadeToHurt*:Regf.DamageIs*:EvtReader.*:EvtxRealLog.SpansAndDamage:RegText.Faults*' \
    platform_tests 'TreeRegistryTest.RefusesATextMadeToHurt*:*.ReadsNoStateOutOfAHostileFolder'
prove "a log cut, rotated and rewritten while it is read" core_tests \
    'QuorilLog.IsReadToAnEnd*' platform_tests '*.SharesAFileWithWhoever*'
prove "a section of the report fails or would hang" core_tests \
    'ProblemReportTest.IsStoredWithout*:ProblemReportTest.GoesOn*:ProblemReportTest.ReportsThat*:LogSections.*:RegistryWalkTest.*' \
    platform_tests 'TreePathsTest.OpensNothingBut*'
prove "the clock is set under pending orders" core_tests 'ScheduleTable.*'
prove "a dialog over the idle lock" gui_tests 'IdleLockFrameTest.*' core_tests 'IdleLock.*' \
    platform_tests 'WorkstationLockTest.*'
prove "a path exchanged after the look" platform_tests 'TreePathsTest.ReachesNothing*:TreePathsTest.GivesWhat*'
prove "a service that nobody recorded" platform_tests '*.AProcessThatNobodyRecorded*:*.ALockThatSomebody*' \
    ctl_tests '*.WhatIsNoFileStays*'
prove "control characters and marks of direction" ctl_tests \
    'TerminalText.*:CtlTest.NothingOfAMachine*:CtlTest.EscapesAndColours*:*.NoPathCommandsTheTerminal' \
    gui_tests '*.ShowsMarksThatTurnText*:*.MarksInAName*'
# Two users at once take root; without it this says so.
rows=0
SECONDS=0
scripts/two-users.sh "$programs" >"$folder/users" || rows=$?
if [ $rows -ne 77 ]; then
    [ $rows -eq 0 ] || { cat "$folder/users" >&2; result=1; }
    printf '| two users on one tree | %d | - | %.2f | %s |\n' "$(grep -c '^passed' "$folder/users")" $SECONDS \
        "$([ $rows -eq 0 ] && echo passed || echo FAILED)"
fi
exit $result
