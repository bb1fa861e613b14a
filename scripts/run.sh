#!/usr/bin/env bash
# Sets everything up and runs the main job: the bundle in a browser. Builds the program alone (not
# the tests or the benchmarks), then serves the pages on http://127.0.0.1:8765/ (over the default
# root) until interrupted; arguments go to `serve` (--port N, --open).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh nimbra-prefs
exec build/nimbra-prefs serve "$@"
