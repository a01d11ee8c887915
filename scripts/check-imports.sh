#!/usr/bin/env bash
# Fails when a program needs a DLL that doesn't come with Windows: check-imports.sh program.exe...
set -euo pipefail
own='advapi32|authz|comctl32|comdlg32|crypt32|d2d1|d3d9|d3d11|d3d12|dcomp|dnsapi|dwmapi|dwrite|dxgi|gdi32|imm32|iphlpapi|kernel32|mpr|msvcrt|netapi32|ntdll|ole32|oleaut32|rpcrt4|secur32|setupapi|shcore|shell32|shlwapi|user32|userenv|uuid|uxtheme|version|winmm|winspool\.drv|ws2_32|wtsapi32|api-ms-win-[a-z0-9-]+'
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
