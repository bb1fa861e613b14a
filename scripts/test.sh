#!/usr/bin/env bash
# Sets everything up and runs the whole test suite, in three stages:
#   1. build/: the GoogleTest suite and the browser tests (CTest).
#   2. build-sanitize/ (clang): the GoogleTest suite and the shipped tour once more under
#      AddressSanitizer, LeakSanitizer and UndefinedBehaviorSanitizer. NIMBRA_SANITIZERS=0 skips it.
#   3. the libFuzzer targets of fuzz/, built in the same tree, each for NIMBRA_FUZZ_SECONDS
#      (default 60; 0 skips them).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh
(cd build && ctest --output-on-failure -j"$(nproc)")

if [ "${NIMBRA_SANITIZERS:-1}" != 0 ]; then
  bash scripts/sanitize-build.sh
  # Leaks fail the run: a reference cycle between a page and its rows, or any other allocation left
  # unreachable at exit. Left out: the memory test of `serve` (it measures the program's resident
  # size, which the sanitizer's own bookkeeping would blur), the killed and concurrent writers
  # (thousands of separate write processes, each rewriting a growing domain: an hour under the
  # sanitizers; the same write path runs sanitized in the fault-injection tests) and the browser
  # tests, which drive the normal build.
  # Allocations are traced by the frame-pointer unwinder (the bundle is built with frame pointers):
  # the slow unwinder on every allocation made the suite about ten times slower, and a leak is
  # found all the same.
  export ASAN_OPTIONS=detect_leaks=1:exitcode=23
  export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
  (cd build-sanitize && ctest --output-on-failure -j"$(nproc)" -LE browser -E '^(ServeMemory|KilledWriters)\.')
  tour_root=$(mktemp -d)
  build-sanitize/nimbra-prefs --root "$tour_root" script resources/tour.nps >/dev/null
  rm -rf "$tour_root"
  unset ASAN_OPTIONS UBSAN_OPTIONS
fi

if [ "${NIMBRA_FUZZ_SECONDS:-60}" -gt 0 ]; then
  bash scripts/fuzz.sh "${NIMBRA_FUZZ_SECONDS:-60}"
fi
