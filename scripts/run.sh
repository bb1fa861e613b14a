#!/usr/bin/env bash
# Sets everything up and runs the main job: a scripted tour of the bundle's pages.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh
exec build/nimbra-prefs script resources/tour.nps
