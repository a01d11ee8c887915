#!/usr/bin/env bash
# Builds the tests so that they record which lines they reach, runs them, and prints the figures for src: a line for
# each folder and what every file leaves out. The whole report is left in build/coverage/report.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh work
cmake --preset coverage -Wno-dev >/dev/null
cmake --build --preset coverage >/dev/null
find build/coverage -name '*.gcda' -delete
ctest --preset coverage --parallel "$(nproc)" --quiet || true
mkdir -p build/coverage/report
gcovr --root . --filter 'src/' --exclude-unreachable-branches --gcov-ignore-parse-errors \
  --html-details build/coverage/report/index.html --json-summary build/coverage/report/summary.json \
  --txt build/coverage/report/summary.txt build/coverage
python3 - <<'END'
import collections, json
files = json.load(open("build/coverage/report/summary.json"))["files"]
folders = collections.defaultdict(lambda: [0, 0])
for file in files:
    for key in (file["filename"].split("/")[1], "all of src"):
        folders[key][0] += file["line_covered"]
        folders[key][1] += file["line_total"]
print("| folder | lines | reached | % |\n|---|---|---|---|")
for name, (covered, total) in sorted(folders.items(), key=lambda item: item[0] == "all of src"):
    print(f"| {name} | {total} | {covered} | {100 * covered / total:.1f} |")
END
