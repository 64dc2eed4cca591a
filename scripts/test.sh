#!/usr/bin/env bash
# Builds the release and the sanitizer variant and runs the tests of both; those of the documents and of
# the build rules for other projects belong to the release variant alone.
# Installs what is missing first. Ends with a status other than 0 when anything fails.
# Where CI is set, compiler warnings are errors.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/setup.sh

say "Looking for compiler, cmake, ninja, GoogleTest, OpenSSL and the sanitizers"
need_test_tools
install_missing

warnings_are_errors=OFF
if [[ -n ${CI:-} ]]; then warnings_are_errors=ON; fi

failed=()
for variant in release sanitize; do
  say "Building the $variant variant in build/$variant"
  build_alone "$variant" cmake --preset "$variant" -DSEALWRIGHT_TESTS=ON -DSEALWRIGHT_WERROR="$warnings_are_errors"
  build_alone "$variant" cmake --build --preset "$variant" -j "$(nproc)"
  say "Running the suite in the $variant variant"
  ctest --preset "$variant" --output-on-failure --no-tests=error -j2 || failed+=("$variant")
done

if ((${#failed[@]} > 0)); then fail "tests failed in: ${failed[*]}"; fi
say "All tests passed in the release and the sanitizer variant"
