#!/usr/bin/env bash
# Builds the library, the CLI and the tests, and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh --test
cmake --workflow --preset default
