#!/usr/bin/env bash
# Configures and builds build-sanitize/ with clang: everything under AddressSanitizer (with
# LeakSanitizer) and UndefinedBehaviorSanitizer, with libFuzzer's coverage, so that one tree holds
# both the sanitized test suite and the fuzz targets of fuzz/. Targets may be named (default: all).
# -O1 with line tables only: half the compile time of -O2 -g, stack traces still name every line;
# assertions stay on.
set -euo pipefail
cd "$(dirname "$0")/.."
CC=clang CXX=clang++ cmake -S . -B build-sanitize -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_CXX_FLAGS_RELWITHDEBINFO='-O1 -gline-tables-only' -DNIMBRA_WERROR=ON -DNIMBRA_FUZZ=ON -DNIMBRA_BENCHMARKS=OFF >/dev/null
cmake --build build-sanitize -j"$(nproc)" ${1:+--target "$@"}
