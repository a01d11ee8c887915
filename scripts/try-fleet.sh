#!/usr/bin/env bash
# Tries samples/fleet for real: three trees on this machine, one of them broken, are looked after by an Ansible playbook.
# Installs ansible-core where it is missing.
#
#   scripts/try-fleet.sh [FOLDER]     FOLDER holds the programs, build/release/bin if not given
set -euo pipefail
cd "$(dirname "$0")/.."
programs=$(realpath "${1:-build/release/bin}")
export PATH=$programs:$PATH LC_ALL=C.UTF-8
if ! command -v ansible-playbook >/dev/null; then
    root=()
    [ "$(id -u)" -eq 0 ] || root=(sudo)
    DEBIAN_FRONTEND=noninteractive "${root[@]}" apt-get install -y -qq --no-install-recommends ansible-core >/dev/null
fi

folder=$(mktemp -d)
stop_all()
{
    quorilctl --machine "$folder/north" stop IRIS CERES >/dev/null 2>&1 || true
    rm -rf "$folder"
}
trap stop_all EXIT
for name in north south depot; do
    quorilctl machine create "$folder/$name"
done
# IRIS needs CERES, which starts first; only Vesta-Überwachung should run there and does not.
quorilctl --machine "$folder/north" start IRIS
quorilctl --machine "$folder/south" set-start-type CERES manual
quorilctl --machine "$folder/south" set-start-type Vesta-Überwachung manual
rm "$folder/depot/Windows/System32/config/SYSTEM"

sed -e "s|/srv/quoril|$folder|; s|^quoril_results=.*|quoril_results=$folder/results|" samples/fleet/inventory.ini \
    >"$folder/inventory.ini"
status=0
ANSIBLE_LOCALHOST_WARNING=false ansible-playbook -i "$folder/inventory.ini" samples/fleet/collect.yml || status=$?
echo "ansible-playbook ended with $status"

echo "Gathered:"
(cd "$folder/results" && find . -type f | sort | xargs wc -c)
grep -c '"running"' "$folder/results/north/status.json"

# The broken tree is told and stops none of the others; nothing that runs by hand is reported.
[ "$status" -ne 0 ]
[ "$(find "$folder/results/north" -name "report-*" | wc -l)" -eq 1 ]
[ "$(find "$folder/results/south" -name 'report-*' | wc -l)" -eq 0 ]
[ ! -e "$folder/results/depot/status.json" ]
echo "as expected"
