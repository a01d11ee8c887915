#!/usr/bin/env bash
# Tries samples/fleet for real, on this machine alone: three trees, one of them broken, are looked after by Ansible and seen
# by Prometheus through a node exporter each. An instance is killed, its alert fires, and Ansible starts it again.
# Installs Debian's ansible-core, prometheus and prometheus-node-exporter where they are missing; none of them is left running.
#
#   scripts/try-fleet.sh [FOLDER]     FOLDER holds the programs, build/release/bin if not given
set -euo pipefail
cd "$(dirname "$0")/.."
programs=$(realpath "${1:-build/release/bin}")
export PATH=$programs:$PATH LC_ALL=C.UTF-8 ANSIBLE_LOCALHOST_WARNING=false
missing=()
for package in ansible-core:ansible-playbook prometheus:promtool prometheus-node-exporter:prometheus-node-exporter; do
    command -v "${package#*:}" >/dev/null || missing+=("${package%:*}")
done
if [ ${#missing[@]} -gt 0 ]; then
    root=()
    [ "$(id -u)" -eq 0 ] || root=(sudo)
    # RUNLEVEL=1 keeps the packages from starting their daemons, which nobody asked for.
    "${root[@]}" env RUNLEVEL=1 DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

folder=$(mktemp -d)
started=()
stop_all()
{
    # shellcheck disable=SC2015
    [ ${#started[@]} -eq 0 ] || kill "${started[@]}" 2>/dev/null || true
    wait
    # Services that the instances depend on are no instances, so each is ended by its recorded process.
    local state pid i
    for state in "$folder"/*/ProgramData/Quoril/services/*/state; do
        pid=$(sed -n 's/^pid=//p' "$state" 2>/dev/null) || continue
        if [ -n "$pid" ] && [[ $(readlink "/proc/$pid/exe") == "$folder"/* ]]; then
            kill "$pid" || true
        fi
    done
    for ((i = 0; i < 50; ++i)); do
        pgrep -f "quoril-service-host $folder/" >/dev/null || break
        sleep 0.1
    done
    rm -rf "$folder"
}
trap stop_all EXIT
playbook()
{
    local name=$1
    shift
    ansible-playbook -i "$folder/inventory.ini" "samples/fleet/$name" "$@"
}
now() { date +%s.%N; }
since() { LC_ALL=C awk -v from="$1" -v to="$(now)" 'BEGIN { printf "%.1f s", to - from }'; }

for name in north south depot; do
    quorilctl machine create "$folder/$name"
done
# IRIS needs CERES, which starts first; only Vesta-Überwachung should run there and does not.
quorilctl --machine "$folder/north" start IRIS
quorilctl --machine "$folder/south" set-start-type CERES manual
quorilctl --machine "$folder/south" set-start-type Vesta-Überwachung manual
mkdir "$folder/metrics"
quorilctl --machine "$folder/depot" metrics --label tree=depot --output "$folder/depot.prom"
rm "$folder/depot/Windows/System32/config/SYSTEM"

sed -e "s|/srv/quoril|$folder|; s|^quoril_results=.*|quoril_results=$folder/results|" samples/fleet/inventory.ini \
    >"$folder/inventory.ini"
status=0
playbook collect.yml || status=$?
echo "ansible-playbook ended with $status"

echo "Gathered:"
(cd "$folder/results" && find . -type f | sort | xargs wc -c)
grep -c '"running"' "$folder/results/north/status.json"

# The broken tree is reported and stops none of the others; nothing that runs by hand is reported.
[ "$status" -ne 0 ]
[ "$(find "$folder/results/north" -name "report-*" | wc -l)" -eq 1 ]
[ "$(find "$folder/results/south" -name 'report-*' | wc -l)" -eq 0 ]
[ ! -e "$folder/results/depot/status.json" ]
# A host without a tree of its own manages the machine that quorilctl chooses there.
sed "s| quoril_machine=.*/north||" "$folder/inventory.ini" >"$folder/without.ini"
QUORIL_MACHINE=$folder/north ansible-playbook -i "$folder/without.ini" samples/fleet/collect.yml --limit north >/dev/null

echo "The alerts and their tests:"
(cd samples/fleet && promtool check config prometheus.yml && promtool test rules quoril.rules.test.yml)
quorilctl --machine "$folder/north" metrics | promtool check metrics
if command -v systemd-analyze >/dev/null; then
    units=$folder/units
    mkdir "$units"
    for kind in service timer; do
        sed "s|/usr/bin/quorilctl|$programs/quorilctl|" "samples/fleet/quoril-metrics@.$kind" >"$units/quoril-metrics@north.$kind"
    done
    systemd-analyze verify "$units"/quoril-metrics@north.{service,timer}
fi

# A node exporter for each tree stands for a machine. What takes minutes in a fleet takes seconds here.
port=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
free_port() { port=$((port + 1)); while (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null; do port=$((port + 1)); done; }
sed -e 's/for: .*/for: 2s/; s/> 300/> 8/' samples/fleet/quoril.rules.yml >"$folder/quoril.rules.yml"
targets=()
relabel=()
for name in north south depot; do
    mkdir "$folder/metrics/$name"
    free_port
    targets+=("127.0.0.1:$port")
    relabel+=("-e" "s|^    relabel_configs:|&\n      - {source_labels: [__address__], regex: '127.0.0.1:$port', replacement: '$name:9100', target_label: __machine}|")
    prometheus-node-exporter --web.listen-address="127.0.0.1:$port" --collector.disable-defaults --collector.textfile \
        --collector.textfile.directory="$folder/metrics/$name" 2>"$folder/exporter-$name.txt" &
    started+=($!)
done
sed -e 's/_interval: 1m/_interval: 1s/' -e "s|targets: .*|targets: [$(IFS=,; echo "${targets[*]}")]|" "${relabel[@]}" \
    -e 's/source_labels: \[__address__\]$/source_labels: [__machine]/' samples/fleet/prometheus.yml >"$folder/prometheus.yml"
cp "$folder/depot.prom" "$folder/metrics/depot/quoril-depot.prom"
# In place of the timer; the broken tree's file stays as it is.
(
    trap exit TERM
    while true; do
        for name in north south depot; do
            quorilctl --machine "$folder/$name" metrics --label tree=$name \
                --output "$folder/metrics/$name/quoril-$name.prom" 2>/dev/null || true
        done
        sleep 1
    done
) &
started+=($!)
free_port
api=http://127.0.0.1:$port/api/v1
prometheus --config.file="$folder/prometheus.yml" --storage.tsdb.path="$folder/tsdb" \
    --web.listen-address="127.0.0.1:$port" 2>"$folder/prometheus.txt" &
started+=($!)

# The alerts that fire, one on a line, as Prometheus gives them over HTTP.
firing()
{
    python3 - "$api/alerts" <<'END' | sort
import json, sys, urllib.request
try:
    with urllib.request.urlopen(sys.argv[1], timeout=5) as answer:
        alerts = json.load(answer)["data"]["alerts"]
except OSError:
    alerts = []
for alert in alerts:
    labels = alert["labels"]
    if alert["state"] == "firing":
        print(labels["alertname"], labels["instance"], labels.get("name", ""))
END
}
# Waits until an alert fires, or no longer does.
await()
{
    local what=$1 wanted=$2 from
    from=$(now)
    for ((i = 0; i < 120; ++i)); do
        if firing | grep -qxF "$wanted"; then
            [ "$what" = fires ] && { echo "$wanted: $what after $(since "$from")"; return; }
        elif [ "$what" = "has ended" ] && [ -n "$(firing)" ]; then
            echo "$wanted: $what after $(since "$from")"
            return
        fi
        sleep 0.5
    done
    echo "$wanted: not so after $(since "$from")"
    cat "$folder"/*.txt
    return 1
}
await fires "QuorilInstanceDown north Vesta-Überwachung"
await fires "QuorilMetricsOld depot "
firing | grep -qxF "QuorilInstanceDown north CERES" && { echo "fires before anything happened"; exit 1; }

pid=$(sed -n 's/^pid=//p' "$folder/north/ProgramData/Quoril/services/CERES/state")
kill -KILL "$pid"
echo "CERES on north is killed (process $pid)"
await fires "QuorilInstanceDown north CERES"
await fires "QuorilInstanceFailed north CERES"
firing

playbook start.yml --limit north
quorilctl --machine "$folder/north" wait CERES Vesta-Überwachung --for running --timeout 0
await "has ended" "QuorilInstanceDown north CERES"
await "has ended" "QuorilInstanceDown north Vesta-Überwachung"

# CERES runs on one of the machines and has never been started on the other.
quorilctl --machine "$folder/north" stop IRIS >/dev/null
playbook restart.yml -e quoril_instance=CERES --limit north,south
for name in north south; do
    quorilctl --machine "$folder/$name" wait CERES --for running --timeout 0
done
echo "as expected"
