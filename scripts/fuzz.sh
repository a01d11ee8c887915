#!/usr/bin/env bash
# Fuzzes the readers of foreign bytes under the address and undefined-behaviour sanitizers and prints the table of
# docs/measurements.md: what was executed and covered. What is found grows in build/fuzz/corpus; an input that breaks a target is left in
# build/fuzz/findings and ends the script with 1.
#
#   scripts/fuzz.sh [TARGET...]     all targets if none is given
#
#   SECONDS_EACH=600   how long each target runs
#   KEEP=1             adds the smallest set of inputs with all that is covered to fuzz/corpus
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${SECONDS_EACH:-600}
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  mapfile -t targets < <(sed -n 's/^quoril_fuzz_target(\(\w*\).*/\1/p' fuzz/CMakeLists.txt)
fi
programs=("${targets[@]/#/fuzz_}")

cmake --preset fuzz -Wno-dev >/dev/null
cmake --build --preset fuzz --target "${programs[@]}" >/dev/null
# The same targets once more for the lines that a corpus covers: sanitizers would count their own checks as well.
cmake -S . -B build/fuzz-coverage -G Ninja -Wno-dev -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_COMPILER=clang++ \
  -DCMAKE_CXX_FLAGS="-fprofile-instr-generate -fcoverage-mapping" >/dev/null
cmake --build build/fuzz-coverage --target "${programs[@]}" >/dev/null
mkdir -p build/fuzz/corpus build/fuzz/findings build/fuzz/logs

# lines TARGET: lines of src that the corpora of the target cover, and how many the target has, as "covered/all".
lines()
{
  local profile=build/fuzz-coverage/$1
  LLVM_PROFILE_FILE=$profile.raw build/fuzz-coverage/bin/fuzz_"$1" fuzz/corpus/"$1" build/fuzz/corpus/"$1" >/dev/null
  llvm-profdata merge -sparse "$profile.raw" -o "$profile.profile"
  llvm-cov export -summary-only -instr-profile "$profile.profile" \
    build/fuzz-coverage/bin/fuzz_"$1" | python3 -c '
import json, sys
files = [f["summary"]["lines"] for f in json.load(sys.stdin)["data"][0]["files"]
         if "/src/" in f["filename"] and f["summary"]["lines"]["covered"]]
print(sum(f["covered"] for f in files), "of", sum(f["count"] for f in files))'
}

broken=0
echo "| target | s | executions | branches covered | of | lines of the files it enters | peak MB | findings |"
echo "|---|---|---|---|---|---|---|---|"
for target in "${targets[@]}"; do
  found=build/fuzz/corpus/$target log=build/fuzz/logs/$target.txt
  mkdir -p "$found"
  build/fuzz/bin/fuzz_"$target" -max_total_time="$seconds" -print_final_stats=1 -timeout=20 -rss_limit_mb=2048 \
    -artifact_prefix="build/fuzz/findings/$target-" "$found" "fuzz/corpus/$target" >"$log" 2>&1 || true
  findings=$(find build/fuzz/findings -name "$target-*" | wc -l)
  [ "$findings" -eq 0 ] || broken=1
  final() { sed -n "s/^stat::$1: *//p" "$log"; }
  printf '| %s | %s | %s | %s | %s | %s | %s | %s |\n' "$target" "$(sed -n 's/^Done .* in \([0-9]*\) second.*/\1/p' "$log")" \
    "$(final number_of_executed_units)" "$(sed -n 's/.*cov: \([0-9]*\).*/\1/p' "$log" | tail -1)" \
    "$(sed -n 's/.*(\([0-9]*\) inline 8-bit counters).*/\1/p' "$log" | head -1)" "$(lines "$target")" \
    "$(final peak_rss_mb)" "$findings"
  if [ -n "${KEEP:-}" ] && [ "$findings" -eq 0 ]; then
    build/fuzz/bin/fuzz_"$target" -set_cover_merge=1 -use_counters=0 "fuzz/corpus/$target" "$found" >>"$log" 2>&1
  fi
done
exit "$broken"
