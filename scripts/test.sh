#!/usr/bin/env bash
# Sets everything up and runs the whole test suite, then the GoogleTest suite once more under
# AddressSanitizer and UndefinedBehaviorSanitizer (build-asan/), then each fuzz target for a
# minute (build-fuzz/). NIMBRA_QUICK=1 runs only the first part.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh
(cd build && ctest --output-on-failure -j"$(nproc)")
[ "${NIMBRA_QUICK:-0}" = 1 ] && exit 0

cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DNIMBRA_WERROR=ON -DNIMBRA_SANITIZE=ON \
  -DNIMBRA_BENCHMARKS=OFF >/dev/null
cmake --build build-asan -j"$(nproc)"
# Leak detection stays off until the reference cycles between pages and their rows are gone.
(cd build-asan && ASAN_OPTIONS=detect_leaks=0 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
  ctest --output-on-failure -j"$(nproc)" -LE browser)

bash scripts/fuzz.sh 60
