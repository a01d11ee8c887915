#!/usr/bin/env bash
# Looks at the sources without running them: the format, clang-tidy over all of src, and each public header alone.
#
#   scripts/tidy.sh [format|tidy|headers]...     all three if none is given
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh checks
checks=("$@")
[ ${#checks[@]} -gt 0 ] || checks=(format tidy headers)

for check in "${checks[@]}"; do
  case "$check" in
    format)
      find bench fuzz samples src tests \( -name '*.cpp' -o -name '*.h' \) -print0 | xargs -0 clang-format-14 --dry-run --Werror
      ;;
    tidy)
      cmake --preset tidy -Wno-dev >/dev/null
      # What moc makes is included by the sources.
      cmake --build --preset tidy --target autogen >/dev/null
      python3 -c '
import json
for entry in json.load(open("build/tidy/compile_commands.json")):
    if "/src/" in entry["file"] and "_autogen/" not in entry["file"] and "/.rcc/" not in entry["file"] \
            and "_resources_" not in entry["file"] and "_verify_interface_" not in entry["file"]:
        print(entry["file"])' | xargs -P "$(nproc)" -n 1 clang-tidy-14 --quiet -p build/tidy
      ;;
    headers)
      cmake --preset tidy -Wno-dev >/dev/null
      cmake --build --preset tidy --target all_verify_interface_header_sets >/dev/null
      ;;
    *)
      echo "usage: scripts/tidy.sh [format|tidy|headers]..." >&2
      exit 2
      ;;
  esac
  echo "$check: passed"
done
