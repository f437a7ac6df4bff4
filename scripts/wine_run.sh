#!/bin/sh
# Runs a Windows program under Wine: the Windows build's CMAKE_CROSSCOMPILING_EMULATOR.
# scripts/windows.sh sets WINEPREFIX, WINEPATH and CFGQ_WINE (the wine64 program).
exec "${CFGQ_WINE:-wine64}" "$@"
