#!/usr/bin/env bash
# Configures and builds the project into build/ (warnings are errors, as in CI).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/bootstrap.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo -DNIMBRA_WERROR=ON >/dev/null
cmake --build build -j"$(nproc)"
