#!/usr/bin/env bash
# Builds the libFuzzer targets of fuzz/ with clang into build-sanitize/ and runs each for SECONDS
# (default 60), starting from the seed corpus in fuzz/corpus/TARGET; what the fuzzer finds new is
# kept in build-sanitize/corpus/TARGET, a crash, leak or hang in build-sanitize/findings/. Exits
# non-zero on a finding. Targets may be named after SECONDS (default: all four).
#   bash scripts/fuzz.sh 60                        # as CI runs them
#   bash scripts/fuzz.sh 14400 ScriptLineFuzzer    # four hours of one target
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
shift || true
targets=("$@")
((${#targets[@]})) || targets=(PreferenceFileFuzzer PageDefinitionFuzzer ScriptLineFuzzer ApiRequestFuzzer)

bash scripts/sanitize-build.sh "${targets[@]}"

export ASAN_OPTIONS=detect_leaks=1:allocator_may_return_null=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
# One fuzzer per core at a time: each gets a whole core for its SECONDS, as when run alone.
fuzz_one() {
  local target=$1 log="build-sanitize/$1.log"
  mkdir -p "build-sanitize/corpus/$target" "build-sanitize/findings/$target"
  if ! build-sanitize/fuzz/"$target" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2560 -max_len=65536 \
      -print_final_stats=1 -artifact_prefix="build-sanitize/findings/$target/" \
      "build-sanitize/corpus/$target" "fuzz/corpus/$target" >"$log" 2>&1; then
    echo "fuzz: $target found a problem (see $log and build-sanitize/findings/$target/)"
    tail -n 40 "$log"
    return 1
  fi
  runs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$' || echo '?')
  echo "fuzz: $target: $runs runs in ${seconds} s"
}

status=0
cores=$(nproc)
for ((first = 0; first < ${#targets[@]}; first += cores)); do
  pids=()
  for target in "${targets[@]:first:cores}"; do
    fuzz_one "$target" &
    pids+=($!)
  done
  for pid in "${pids[@]}"; do
    wait "$pid" || status=1
  done
done
exit $status
