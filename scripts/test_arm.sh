#!/usr/bin/env bash
# Builds for 64-bit Arm and tests the result under emulation: the unit tests with the processor's
# instructions and without, what commands leave in memory, then the road from keys to checked images
# with Arm and this machine taking turns at each step. Builds the 32-bit variant as well. Compiler
# warnings are errors. Installs what is missing first. Ends with a status other than 0 when anything
# fails.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/setup.sh
readonly build=$PWD/build/aarch64
readonly libraries=$build/root  # GoogleTest and OpenSSL for Arm; no part of this system
readonly run_arm=(qemu-aarch64 -L /usr/aarch64-linux-gnu)
# What a program of the tool is started with on either machine; its name follows.
declare -A start=([arm]="${run_arm[*]} $(printf %q "$build/front/")"
  [here]="$(printf %q "$PWD/build/release/front/")")

say "Looking for the compilers, the emulator and what the tests need"
need_test_tools
need_arm_tools
install_missing

# --- The libraries of the tests come from Debian's packages for Arm. They are unpacked into the
# build folder by a package manager with lists of its own, and this system stays as it is.

fetch_libraries() {
  local apt=$build/apt package
  rm -rf "$apt" "$libraries.new"
  mkdir -p "$apt/lists/partial" "$apt/archives/partial" "$libraries.new"
  : >"$apt/status"
  local options=(-q -o APT::Architecture=arm64 -o APT::Architectures=arm64 -o Dir::State="$apt"
    -o Dir::State::lists="$apt/lists" -o Dir::State::status="$apt/status" -o Dir::Cache="$apt"
    -o APT::Sandbox::User=root -o Acquire::Languages=none)
  apt-get "${options[@]}" update || say "apt-get update failed; going on with the lists it got"
  (cd "$apt" && apt-get "${options[@]}" download libgtest-dev libgmock-dev libssl-dev) ||
    fail "could not fetch GoogleTest and OpenSSL for Arm"
  for package in "$apt"/*.deb; do dpkg-deb -x "$package" "$libraries.new"; done
  mv "$libraries.new" "$libraries"
  rm -rf "$apt"
}

if [[ ! -d $libraries ]]; then
  say "Fetching GoogleTest and OpenSSL for Arm into $libraries (12 MB)"
  fetch_libraries
fi

say "Building for 64-bit Arm in $build"
only=(-D CMAKE_FIND_ROOT_PATH="$libraries" -D CMAKE_FIND_ROOT_PATH_MODE_PROGRAM=NEVER)
for kind in LIBRARY INCLUDE PACKAGE; do only+=(-D "CMAKE_FIND_ROOT_PATH_MODE_$kind=ONLY"); done
cmake -S . -B "$build" -G Ninja -D CMAKE_BUILD_TYPE=Release -D SEALWRIGHT_WERROR=ON \
  -D CMAKE_SYSTEM_NAME=Linux -D CMAKE_SYSTEM_PROCESSOR=aarch64 \
  -D CMAKE_CXX_COMPILER=aarch64-linux-gnu-g++ \
  -D CMAKE_CXX_FLAGS="-isystem '$libraries/usr/include/aarch64-linux-gnu'" \
  -D CMAKE_CROSSCOMPILING_EMULATOR="$(IFS=';' && printf '%s' "${run_arm[*]}")" \
  -D OPENSSL_USE_STATIC_LIBS=ON -D CMAKE_UNITY_BUILD=ON "${only[@]}"
cmake --build "$build" -j "$(nproc)" --target unit_tests safety_tests sealwright_main sealwright_client

# Nobody runs it here: what counts is that it compiles without warnings.
say "Building the 32-bit variant in build/i686"
cmake -S . -B build/i686 -G Ninja -D CMAKE_BUILD_TYPE=Release -D SEALWRIGHT_WERROR=ON \
  -D CMAKE_CXX_FLAGS_RELEASE=-O1 \
  -D CMAKE_SYSTEM_NAME=Linux -D CMAKE_SYSTEM_PROCESSOR=i686 \
  -D CMAKE_CXX_COMPILER=i686-linux-gnu-g++ -D SEALWRIGHT_TESTS=OFF -D CMAKE_UNITY_BUILD=ON
cmake --build build/i686 -j "$(nproc)"

# --- The unit tests. The emulator lists the functions it meets, which tells the path that ran.

readonly processor_functions='sha1_compress_by_processor|aes_cbc_(en|de)crypt_by_processor'

# Runs the suite with the arguments that follow the name of its logs.
unit_suite() {
  local log=$build/unit_$1
  "${run_arm[@]}" -d in_asm -D "$log.functions" "$build/tests/unit_tests" "${@:2}" \
    --gtest_brief=1 >"$log.out" 2>&1
}

# How many of the three functions of the processor paths ran.
processor_functions_in() {
  grep '^IN: ' "$build/unit_$1.functions" | grep -o -E "$processor_functions" | sort -u | wc -l
}

say "Running the unit tests on both paths under emulation, and looking for secrets that commands leave behind"
# Big numbers and what is above them have one path on Arm, and the other run takes it.
unit_suite portable --portable \
  --gtest_filter=-Bn.*:WordPath.*:TrialDivision.*:Prime.*:KeyGeneration.*:Buffers.* &
unit_suite processor || fail "processor path: $(cat "$build/unit_processor.out")"
"${run_arm[@]}" "$build/tests/safety_tests" --gtest_filter='*Secrets*' --gtest_brief=1 |
  tee "$build/safety.out"
grep -q '\[  PASSED  \] [1-9]' "$build/safety.out" || fail "the search for secrets did not run"
wait $! || fail "portable path: $(cat "$build/unit_portable.out")"
tail -q -n 1 "$build"/unit_{processor,portable}.out
(($(processor_functions_in processor) == 3)) || fail "the Arm instructions were not used"
(($(processor_functions_in portable) == 0)) || fail "the portable run used the Arm instructions"

# --- The road. Keys made on one machine seal and sign on the other, and the first checks.

say "Building the end-to-end tests for this machine"
build_alone release cmake --preset release -D SEALWRIGHT_TESTS=ON
build_alone release cmake --build --preset release -j "$(nproc)" --target e2e_tests sealwright_main sealwright_client

# take_turns PROGRAM KEYS_ON IMAGES_ON: writes a program that has PROGRAM make keys and check on one
# machine and make images on the other.
take_turns() {
  local program=$1 keys_on=$2 images_on=$3
  cat >"$build/turns/$program" <<END
#!/bin/bash
case \${!#} in
  -STAGE1 | -STAGE2 | -P) exec ${start[$images_on]}$program "\$@" ;;
  *) exec ${start[$keys_on]}$program "\$@" ;;
esac
END
  chmod +x "$build/turns/$program"
}

road() {
  say "The road with keys and checks: $1, images: $2"
  mkdir -p "$build/turns"
  take_turns Sealwright_V21 "$1" "$2"
  take_turns Sealwright_V21_client "$1" "$2"
  SEALWRIGHT_FULL_TOOL=$build/turns/Sealwright_V21 \
    SEALWRIGHT_CLIENT_TOOL=$build/turns/Sealwright_V21_client \
    build/release/tests/e2e_tests --gtest_filter='Road.*' --gtest_brief=1 |
    tee "$build/road.out"
  grep -q '\[  PASSED  \] [1-9]' "$build/road.out" || fail "no test of the road ran"
}

road arm here
road here arm

say "64-bit Arm passed under emulation; the 32-bit variant built without warnings"
