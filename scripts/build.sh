#!/usr/bin/env bash
# Configures and builds the project into build/ (warnings are errors, as in CI). Targets may be
# named (`bash scripts/build.sh nimbra-prefs` builds the program alone); default: everything.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/bootstrap.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo -DNIMBRA_WERROR=ON >/dev/null
cmake --build build -j"$(nproc)" ${1:+--target "$@"}
