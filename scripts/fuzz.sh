#!/usr/bin/env bash
# Builds the fuzz harness and runs it for a while. Installs what is missing first. Ends with a status
# other than 0 when anything is found.
#
#   scripts/fuzz.sh [SECONDS]   20 seconds unless told otherwise
#   scripts/fuzz.sh 600         the long run
#
# Inputs that reach something new are kept in build/fuzz/corpus, so that runs build on each other; an
# input that shows a fault lands in build/fuzz/findings.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/setup.sh

readonly seconds=${1:-20}
readonly build=build/fuzz
readonly log=$build/hostile.log

say "Looking for clang with its fuzzer, cmake, ninja and OpenSSL"
need has_cmake cmake
need 'has_command ninja' ninja-build
need has_openssl libssl-dev
install_fuzz_tools
export CXX=clang++

say "Building the harness in $build"
cmake --preset fuzz
cmake --build --preset fuzz -j "$(nproc)" --target hostile
mkdir -p "$build/findings" "$build/corpus"

say "Running it for $seconds seconds"
clean=true
"$build/fuzz/hostile" -max_total_time="$seconds" -max_len=4096 -len_control=0 -timeout=20 \
  -entropic_scale_per_exec_time=1 -print_final_stats=1 -artifact_prefix="$build/findings/" \
  "$build/corpus" >"$log" 2>&1 </dev/null || clean=false
executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
coverage=$(grep -oE 'cov: [0-9]+ ft: [0-9]+' "$log" | tail -n 1 || true)
say "${executions:-no} executions, ${coverage:-no coverage}"
if [[ $clean == false ]]; then
  grep -vE '^#[0-9]+|NEW_FUNC' "$log" | tail -n 60 || true
  fail "a fault was found; see $build/findings"
fi
say "Nothing found"
