#!/usr/bin/env bash
# Sets everything up and runs the whole test suite. Two further stages run when asked for:
#   NIMBRA_SANITIZERS=1  the GoogleTest suite and the shipped tour once more under AddressSanitizer,
#                        LeakSanitizer and UndefinedBehaviorSanitizer (build-asan/)
#   NIMBRA_FUZZ_SECONDS=N  each fuzz target for N seconds (build-fuzz/, clang)
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh
(cd build && ctest --output-on-failure -j"$(nproc)")

if [ "${NIMBRA_SANITIZERS:-0}" = 1 ]; then
  cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DNIMBRA_WERROR=ON -DNIMBRA_SANITIZE=ON \
    -DNIMBRA_BENCHMARKS=OFF >/dev/null
  cmake --build build-asan -j"$(nproc)"
  # Leaks fail the run: a reference cycle between a page and its rows, or any other allocation left
  # unreachable at exit. The memory test of `serve` is left out: it measures the program's resident
  # size, which the sanitizer's own bookkeeping would blur.
  export ASAN_OPTIONS=detect_leaks=1:exitcode=23 LSAN_OPTIONS=fast_unwind_on_malloc=0
  export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
  (cd build-asan && ctest --output-on-failure -j"$(nproc)" -LE browser -E '^ServeMemory\.')
  tour_root=$(mktemp -d)
  build-asan/nimbra-prefs --root "$tour_root" script resources/tour.nps >/dev/null
  rm -rf "$tour_root"
  unset ASAN_OPTIONS LSAN_OPTIONS UBSAN_OPTIONS
fi

if [ "${NIMBRA_FUZZ_SECONDS:-0}" -gt 0 ]; then
  bash scripts/fuzz.sh "$NIMBRA_FUZZ_SECONDS"
fi
