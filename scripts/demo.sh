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
out=$(mktemp -d)
"$bin" convert examples/ringtone.mid "$out/ringtone.imy"
cat "$out/ringtone.imy"
"$bin" convert "$out/ringtone.imy" "$out/back.mid"
"$bin" midi info "$out/back.mid"
"$bin" convert "$out/back.mid" -
