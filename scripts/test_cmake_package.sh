#!/usr/bin/env bash
# Usage: scripts/test_cmake_package.sh BUILD_FOLDER
#
# Installs a build, seals with its CMake rules in the small project tests/cmake_package, and looks
# whether they run again when, and only when, something has changed that they depend on, and whether a
# failure stops the build.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

fail() {
  printf 'error: %s\n' "$*" >&2
  cat log >&2
  exit 1
}

cmake --install "$build" --component client --prefix "$work/prefix" >log || fail "not installed"
PATH=$work/prefix/bin:$PATH
cp -r "$root/tests/cmake_package" project
head -c 1000 /dev/urandom >project/BL1.in
head -c 1001 /dev/urandom >project/BL2.bin
{
  Sealwright_seal root-key project/keys && Sealwright_seal stage2-key project/keys/release &&
    cp project/keys/release_V21.spk project/keys/public_half &&
    cp project/keys/release_V21.prv 'project/keys/private half' &&
    Sealwright_seal stage2-key project/keys/elsewhere &&
    Sealwright_seal export-key project/keys/elsewhere_V21.prv project/elsewhere.pem &&
    rm project/keys/elsewhere_V21.prv
} >log || fail "no keys"

readonly all='info/secured_BL1.bin secured BL2.bin secured_BL1.bin secured_BL2.bin secured_elsewhere.bin '

# makes OUTPUTS: a build makes these outputs anew and no other.
makes() {
  local before=project/before
  touch "$before"
  sleep 0.02
  cmake --build built >log 2>&1 || fail "does not build"
  (cd built && find . -name 'secured*' -newer "../$before" -printf '%P\n' | sort | tr '\n' ' ') >made
  [[ $(<made) == "$1" ]] || fail "made '$(<made)', not '$1', after: $2"
}

boots() {
  Sealwright_inspect --boot project/keys/eFuseData_V21.dat "built/$1" "built/$2" >log || fail "$1 and $2 do not boot"
}

for generator in Ninja 'Unix Makefiles'; do
  rm -rf built
  cmake -S project -B built -G "$generator" -DCMAKE_PREFIX_PATH="$work/prefix" >log 2>&1 || fail "$generator"
  makes "$all" "nothing was there"
  boots secured_BL1.bin secured_BL2.bin
  boots info/secured_BL1.bin 'secured BL2.bin'
  makes '' "nothing has changed"
  touch project/BL2.bin
  makes 'secured BL2.bin secured_BL2.bin secured_elsewhere.bin ' "a new BL2"
  touch project/BL1.in
  makes 'info/secured_BL1.bin secured_BL1.bin ' "a new BL1"
  for key in privateKey_V21.dat publicKeyInfo_V21.dat eFuseData_V21.dat; do
    touch "project/keys/$key"
    makes 'info/secured_BL1.bin secured_BL1.bin ' "a new $key"
  done
  touch project/keys/release_V21.prv
  makes 'secured_BL2.bin ' "a new private key"
  touch 'project/keys/private half'
  makes 'secured BL2.bin ' "a new private key that is named"

  # The private key of somebody else: the build fails, what was made before stays, and it goes on failing
  # until the keys belong together again.
  cp project/keys/release_V21.prv right.prv
  Sealwright_seal stage2-key other >log
  cp other_V21.prv project/keys/release_V21.prv
  cp built/secured_BL2.bin older.bin
  for _ in 1 2; do
    if cmake --build built >log 2>&1; then fail "a foreign private key signs"; fi
    cmp -s older.bin built/secured_BL2.bin || fail "a failure changed the older image"
  done
  cp right.prv project/keys/release_V21.prv
  rm other_V21.*
  makes 'secured_BL2.bin ' "the right key again"
done
echo "The CMake rules seal, and seal again when they have to"
