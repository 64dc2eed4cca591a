#!/usr/bin/env bash
# Builds the fuzz harnesses and runs each for a while.
#
#   scripts/fuzz.sh [SECONDS_PER_HARNESS] [HARNESS...]     20 seconds each unless told otherwise
#   scripts/fuzz.sh 600                                    the long run
#
# Inputs that reached something new are kept in build/fuzz/corpus, so that runs build on each other;
# an input that shows a fault lands in build/fuzz/findings. Exit status 0: nothing was found.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-20}
shift $(($# > 0 ? 1 : 0))
harnesses=("$@")
[ ${#harnesses[@]} -gt 0 ] || harnesses=(pss context private_key aes_cbc bn)
build=${BUILD_DIR:-build/fuzz}

install_packages() {
  echo "Installing: $*"
  local as_root=()
  [ "$(id -u)" -eq 0 ] || as_root=(sudo)
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -q
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -qy --no-install-recommends "$@"
}

links_fuzzers() {
  local probe
  probe=$(mktemp)
  echo 'extern "C" int LLVMFuzzerTestOneInput(const unsigned char*, unsigned long) { return 0; }' |
    clang++ -x c++ -fsanitize=fuzzer,address,undefined - -o "$probe" 2>/dev/null
  local result=$?
  rm -f "$probe"
  return $result
}

missing=()
command -v clang++ >/dev/null || missing+=(clang)
command -v cmake >/dev/null || missing+=(cmake)
command -v ninja >/dev/null || missing+=(ninja-build)
[ -e /usr/include/openssl/evp.h ] || missing+=(libssl-dev)
[ ${#missing[@]} -eq 0 ] || install_packages "${missing[@]}"
if ! links_fuzzers; then
  install_packages "libclang-rt-$(clang++ -dumpversion | cut -d. -f1)-dev"
fi

cmake --preset fuzz -B "$build"
cmake --build "$build" --parallel "$(nproc)"
mkdir -p "$build/findings"
"$build/fuzz/make_seeds" "$build/seeds"

status=0
for harness in "${harnesses[@]}"; do
  echo "== $harness, $seconds s"
  corpus=$build/corpus/$harness
  log=$build/$harness.log
  mkdir -p "$corpus"
  if ! "$build/fuzz/$harness" -max_total_time="$seconds" -max_len=2300 -timeout=20 \
    -entropic_scale_per_exec_time=1 -print_final_stats=1 -artifact_prefix="$build/findings/$harness-" \
    "$corpus" "$build/seeds/$harness" >"$log" 2>&1; then
    status=1
    grep -vE '^#[0-9]+' "$log" | tail -n 60
    echo "FOUND a fault in $harness: see $build/findings and $log"
  fi
  executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  reached=$(grep -oE 'cov: [0-9]+ ft: [0-9]+' "$log" | tail -n 1)
  echo "$harness: ${executions:-0} executions, ${reached:-no coverage}"
done
exit $status
