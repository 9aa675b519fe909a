#!/usr/bin/env bash
# Builds the CLI and runs it on the bundled examples.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
cmake --preset default >/dev/null
cmake --build --preset default --target handset_cli >/dev/null
bin=build/default/handset
set -x
"$bin" identify examples/*
