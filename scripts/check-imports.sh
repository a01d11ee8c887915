#!/usr/bin/env bash
# Fails when a program needs a DLL at its start that doesn't come with Windows, or that somebody could put in its place
# beside the program: check-imports.sh program.exe...
set -euo pipefail
# Windows keeps these loaded, or its loader maps them by itself (api-ms-win-): none of them is looked for beside the
# program. The others that a program uses are loaded late, from the system's folder (cmake/QuorilDelayLoad.cmake).
own='advapi32|comdlg32|gdi32|imm32|kernel32|msvcrt|ole32|oleaut32|rpcrt4|setupapi|shell32|shlwapi|user32|ws2_32|api-ms-win-[a-z0-9-]+'
failed=0
for program in "$@"; do
  imports=$(x86_64-w64-mingw32-objdump -p "$program" | sed -n 's/^\s*DLL Name: //p' | tr 'A-Z' 'a-z')
  [ -n "$imports" ] || { echo "$program: no import table"; failed=1; }
  others=$(grep -vxE "($own)(\.dll)?" <<<"$imports" || true)
  if [ -n "$others" ]; then
    echo "$program needs $(tr '\n' ' ' <<<"$others")"
    failed=1
  fi
done
exit "$failed"
