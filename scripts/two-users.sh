#!/usr/bin/env bash
# What one user can do to another on a tree that both reach: the operator is root, the other one somebody whom setpriv
# makes. Prints a line for each case and ends with 1 if one failed; with 77 and a word where it can't be tried.
#
#   scripts/two-users.sh [FOLDER]     FOLDER holds the programs, build/dev/bin if not given
set -uo pipefail
programs=$(realpath "${1:-$(dirname "$0")/../build/dev/bin}")
if [ "$(id -u)" -ne 0 ] || ! command -v setpriv >/dev/null; then
    echo "two users: not tried, this needs root and setpriv" >&2
    exit 77
fi
folder=$(mktemp -d)
chmod 755 "$folder"
# What was started here, services by their records.
started=()
finish()
{
    local pid
    for pid in "${started[@]}" $(find "$folder" -path '*/services/*/state' -exec sed -n 's/^\(host-\)\?pid=//p' {} +); do
        kill "$pid"
    done 2>/dev/null
    rm -rf "$folder"
}
trap finish EXIT
# The other user may not see into the folder of the build.
mkdir "$folder/bin"
cp "$programs"/{quorilctl,quoril-emulator,quoril-service-host} "$folder/bin"
export PATH="$folder/bin:$PATH" QT_LOGGING_RULES='*=false' LC_ALL=C.UTF-8
other() { setpriv --reuid=65534 --regid=65534 --clear-groups -- env XDG_RUNTIME_DIR= "$@"; }
cd "$folder" || exit 1
result=0

# try NAME COMMAND...: the case holds if the command ends with 0.
try()
{
    local name=$1
    shift
    if ("$@") >"$folder/told" 2>&1; then
        echo "passed: $name"
    else
        echo "FAILED: $name"
        sed 's/^/    /' "$folder/told"
        result=1
    fi
}

# make NAME: a machine of the other user's, in a folder of his own.
make()
{
    mkdir -p "$folder/$1"
    chown 65534:65534 "$folder/$1"
    other quorilctl machine create "$folder/$1/tree"
}

foreignLink()
{
    mkdir shared home && chmod 777 shared && touch home/kept
    other ln -s "$folder/home" shared/X.new
    quorilctl machine create shared/X && test -e home/kept && test -L shared/X.new && test -d shared/X/Windows
}

manyMakers()
{
    local i made=0 told=0
    mkdir many
    for i in $(seq 16); do
        (quorilctl machine create many/one >"many/$i.out" 2>&1; echo $? >"many/$i.code") &
    done
    wait
    for i in $(seq 16); do
        case $(cat "many/$i.code") in
        0) made=$((made + 1)) ;;
        1) grep -q . "many/$i.out" && told=$((told + 1)) ;;
        esac
    done
    ls -A many
    test "$made" = 1 && test "$told" = 15 && test "$(find many -mindepth 1 -maxdepth 1 ! -name '*.out' ! -name '*.code')" = many/one
}

ownerStays()
{
    make owned && quorilctl --machine owned/tree set-start-type CERES disabled \
        && other quorilctl --machine owned/tree set-start-type CERES manual \
        && quorilctl --machine owned/tree start CERES && quorilctl --machine owned/tree stop CERES \
        && other quorilctl --machine owned/tree start CERES && other quorilctl --machine owned/tree stop CERES \
        && test -z "$(find owned/tree ! -user 65534 ! -name state ! -name report)"
}

privateHive()
{
    local hive=private/tree/Windows/System32/config/SYSTEM
    make private && chmod 640 $hive && chgrp 12345 $hive && quorilctl --machine private/tree set-start-type CERES disabled \
        && test "$(stat -c %a:%u:%g $hive)" = 640:65534:12345
}

foreignProcess()
{
    make forged || return 1
    local state pid
    other quorilctl --machine forged/tree start CERES && other quorilctl --machine forged/tree stop CERES
    state=$(echo forged/tree/ProgramData/Quoril/services/*/state)
    sleep 300 &
    pid=$!
    started+=("$pid")
    other tee "$state" >/dev/null <<STATE
state=running
pid=$pid
start=$(cut -d' ' -f22 /proc/$pid/stat)
boot=$(cat /proc/sys/kernel/random/boot_id)
image=$(readlink /proc/$pid/exe)
STATE
    ! quorilctl --machine forged/tree stop CERES 2>stopped || return 1
    grep -q 'others than this user and root' stopped && kill -0 "$pid"
}

readersLock()
{
    quorilctl machine create read && quorilctl --machine read start CERES && quorilctl --machine read stop CERES || return 1
    local file
    for file in $(find read/ProgramData \( -name .lock -o -name host \)) read/Windows/System32/config/.SYSTEM.lock; do
        ! other flock -sn "$file" true || return 1
    done
    other quorilctl --machine read status && quorilctl --machine read start CERES && quorilctl --machine read stop CERES
}

deniedNotProtected()
{
    ! other quorilctl --machine read start CERES 2>denied || return 1
    cat denied
    grep -q 'Access is denied' denied && ! grep -q 'write protected' denied
}

squattedChannel()
{
    mkdir -m 1777 tmp && other mkdir "$folder/tmp/quoril-0"
    TMPDIR=$folder/tmp XDG_RUNTIME_DIR='' quorilctl --machine read install CERES2 --config 'C:\Program Files\Quoril\ceres.cfg' \
        --executable 'C:\Program Files\Quoril\quoril-emulator.exe' >squatted 2>&1
    cat squatted
    grep -q 'no folder of this user alone' squatted
}

exchangedFolders()
{
    make raced && mkdir -p outside/System32/config || return 1
    cp raced/tree/Windows/System32/config/SYSTEM outside/System32/config/ && sha256sum outside/System32/config/* >before
    other bash -c 'cd raced/tree; while [ ! -e "$0/over" ]; do
        mv Windows .w; ln -s "$0/outside" Windows; rm Windows; mv .w Windows; done' "$folder" &
    local racer=$! i type
    for i in $(seq 40); do
        type=$([ $((i % 2)) = 0 ] && echo manual || echo disabled)
        quorilctl --machine raced/tree set-start-type CERES "$type"
    done >/dev/null 2>&1
    touch over
    wait "$racer" 2>/dev/null
    find outside
    sha256sum -c before && test "$(find outside -type f | wc -l)" = 1
}

try "machine create follows and removes nothing of another user" foreignLink
try "of sixteen that make one machine one does, and nothing else is left" manyMakers
try "what root changes in a user's tree stays the user's to change" ownerStays
try "a private hive keeps owner, group and mode" privateHive
try "a process that the tree's owner names is not ended" foreignProcess
try "who may only read holds no lock" readersLock
try "who may not lock is denied access, and the disk is not called protected" deniedNotProtected
try "a channel folder that somebody else made is reported" squattedChannel
try "a folder exchanged for a link lets nothing out of the tree" exchangedFolders
exit $result
