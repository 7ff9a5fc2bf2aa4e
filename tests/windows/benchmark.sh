#!/usr/bin/env bash
# Runs beside the DLLs, on a system with Wine: how long the DLL takes to load.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
. ./prefix.sh
wine load_benchmark.exe
