#!/usr/bin/env bash
# Builds the fuzz harnesses and runs each for a while. Installs what is missing first. Ends with a
# status other than 0 when anything is found.
#
#   scripts/fuzz.sh [SECONDS [HARNESS...]]   every harness, 20 seconds each, unless told otherwise
#   scripts/fuzz.sh 600                      the long run
#
# Inputs that reach something new are kept in build/fuzz/corpus, so that runs build on each other; an
# input that shows a fault lands in build/fuzz/findings.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/setup.sh

readonly seconds=${1:-20}
harnesses=("${@:2}")
if ((${#harnesses[@]} == 0)); then harnesses=(pss context private_key aes_cbc bn); fi
readonly build=build/fuzz
export CXX=clang++

has_fuzzer() {
  printf 'extern "C" int LLVMFuzzerTestOneInput(const char*, unsigned long) { return 0; }\n' |
    compiles -fsanitize=fuzzer,address,undefined
}

say "Looking for clang with its fuzzer, cmake, ninja and OpenSSL"
need 'has_command clang++' clang
need has_cmake cmake
need 'has_command ninja' ninja-build
install_missing
need has_fuzzer "libclang-rt-$(clang++ -dumpversion | cut -d. -f1)-dev"
need has_openssl libssl-dev
install_missing

say "Building the harnesses in $build"
cmake --preset fuzz
cmake --build --preset fuzz -j "$(nproc)"
mkdir -p "$build/findings"
"$build/fuzz/make_seeds" "$build/seeds" >/dev/null

failed=()
for harness in "${harnesses[@]}"; do
  say "Running $harness for $seconds seconds"
  corpus=$build/corpus/$harness
  log=$build/$harness.log
  mkdir -p "$corpus"
  if ! "$build/fuzz/$harness" -max_total_time="$seconds" -max_len=2300 -timeout=20 \
    -entropic_scale_per_exec_time=1 -print_final_stats=1 \
    -artifact_prefix="$build/findings/$harness-" \
    "$corpus" "$build/seeds/$harness" >"$log" 2>&1 </dev/null; then
    failed+=("$harness")
    grep -vE '^#[0-9]+|NEW_FUNC' "$log" | tail -n 60 || true
  fi
  executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  coverage=$(grep -oE 'cov: [0-9]+ ft: [0-9]+' "$log" | tail -n 1 || true)
  printf '%s: %s executions, %s\n' "$harness" "${executions:-no}" "${coverage:-no coverage}"
done

if ((${#failed[@]} > 0)); then fail "faults found by: ${failed[*]}; see $build/findings"; fi
say "Nothing found"
