#!/usr/bin/env bash
# Usage: scripts/quickstart.sh [BL1 [BL2]]
#
# Builds the tool and walks both schemes from key generation to verified images, on the given images
# or on two sample images, in the new folder ./sealwright-demo (another name: SEALWRIGHT_DEMO=NAME).
# Installs what is missing first. It shows each command and its output, and stops with a status
# other than 0 at the first step that does not end as it must.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$root/scripts/setup.sh"

readonly block_length=16           # bytes; scheme 2.1 encrypts BL1 in whole blocks
readonly sample_bl1_length=15360   # 16 KiB when sealed by scheme 2.1
readonly sample_bl2_length=614399  # BL2 may have any length

check_image() {
  [[ -f $1 && -r $1 ]] || fail "no readable file: $1"
}

check_bl1_length() {
  local length=$1 name=$2
  local rest=$((length % block_length))
  if ((rest == 0)); then return; fi
  local padded=$((length - rest + block_length))
  fail "$name has $length bytes. Scheme 2.1 encrypts BL1 in blocks of $block_length bytes, and the" \
    "tool refuses other lengths without a message. Pad it with zero bytes, for example with" \
    "'truncate -s $padded $(printf %q "$name")', and run this again."
}

length_of() { stat -L -c %s "$1"; }

# --- What to work on: looked at before anything is installed, built or written.

if (($# > 2)); then fail "usage: scripts/quickstart.sh [BL1 [BL2]]"; fi
for image in "$@"; do check_image "$image"; done
if (($# > 0)); then check_bl1_length "$(length_of "$1")" "$1"; fi
demo=${SEALWRIGHT_DEMO:-sealwright-demo}
if [[ -e $demo || -L $demo ]]; then
  fail "$demo is there already and is not written over; move it away or set SEALWRIGHT_DEMO=NAME"
fi

# --- The tool.

say "Looking for compiler, cmake and ninja"
need_build_tools
install_missing
say "Building the tool in build/release"
(
  cd "$root"
  # A build tree that is there is kept as it is configured; a new one leaves out the tests.
  if [[ ! -f build/release/build.ninja ]]; then
    cmake --preset release -DSEALWRIGHT_TESTS=OFF
  fi
  cmake --build --preset release --target main client_main
)
export PATH="$root/build/release/front:$PATH"

# --- The images.

mkdir "$demo"
demo=$(cd "$demo" && pwd)
for scheme in 2.1 1.1; do
  mkdir "$demo/v$scheme"
done
make_or_copy() {
  local name=$1 sample_length=$2 given=${3:-}
  if [[ -n $given ]]; then
    say "Copying $given to $name"
    cp -- "$given" "$demo/v2.1/$name"
  else
    say "Making a sample image $name of $sample_length bytes"
    head -c "$sample_length" /dev/urandom >"$demo/v2.1/$name"
  fi
  chmod u+rw "$demo/v2.1/$name"
  cp -- "$demo/v2.1/$name" "$demo/v1.1/$name"
}
say "The folder is $demo"
make_or_copy BL1.bin "$sample_bl1_length" "${1:-}"
make_or_copy BL2.bin "$sample_bl2_length" "${2:-}"
bl1_length=$(length_of "$demo/v2.1/BL1.bin")
bl2_length=$(length_of "$demo/v2.1/BL2.bin")

# --- The walk. The exit status alone does not tell success from failure (see the manual), so each
# step is judged by its verdict line and by the files that it must have written.

stop() {
  fail "stopped: $*. What was made so far is in $demo."
}

# Runs a command as typed and shows what it prints.
run() {
  printf '\n$ %s\n' "$*"
  output=$("$@" 2>&1) || true
  if [[ -n $output ]]; then printf '%s\n' "$output"; fi
}

# The same for a command of the tool; its banner is shown once for each scheme.
run_tool() {
  printf '\n$ Sealwright_V21 %s\n' "$*"
  output=$(Sealwright_V21 "$@" 2>&1) || true
  if [[ -z $banner_shown ]]; then
    printf '%s\n' "$output"
    say "Each command prints this banner; it is left out from here on."
    banner_shown=yes
  else
    # From the empty first line and the title to the empty line behind the notice.
    printf '%s\n' "$output" | sed -e '1{/^$/d}' -e '/^\*\*\*Sealwright/,/^$/d'
  fi
}

verdict() {
  grep -q -F -x -e "$1" <<<"$output" || stop "the line \"$1\" is missing"
}

made() {
  local name=$1 length=$2
  [[ -f $name ]] || stop "$name was not written"
  (($(length_of "$name") == length)) || stop "$name has $(length_of "$name") bytes, not $length"
}

owner_only() {
  [[ $(stat -c %a "$1") == 600 ]] || stop "others may read $1"
}

walk_v21() {
  run_tool -v2.1 -KEYGEN
  made publicKeyInfo_V21.dat 548
  made privateKey_V21.dat 1200
  made eFuseData_V21.dat 20
  owner_only privateKey_V21.dat
  run_tool -v2.1 stage2Key -STAGE2_KEYGEN
  made stage2Key_V21.spk 548
  made stage2Key_V21.prv 1200
  owner_only stage2Key_V21.prv
  run cp stage2Key_V21.spk publicKeyInfo_V21_stage2.dat
  made publicKeyInfo_V21_stage2.dat 548
  run_tool -v2.1 BL1.bin secured_BL1_V21.bin -STAGE1
  verdict 'Stage 1: Signature generation is successful.'
  made secured_BL1_V21.bin $((bl1_length + 1024))
  run_tool -v2.1 BL1.bin secured_BL1_V21_info.bin -STAGE1 -P
  verdict 'Stage 1: Signature generation is successful.'
  made secured_BL1_V21_info.bin $((bl1_length + 48 + 1024))
  run_tool -v2.1 BL2.bin secured_BL2_V21.bin stage2Key_V21.prv -STAGE2
  verdict 'Stage 2: Signature generation is successful.'
  made secured_BL2_V21.bin $((bl2_length + 256))
  run_tool -v2.1 secured_BL1_V21.bin eFuseData_V21.dat -VERIFY
  verdict 'Stage 1: Signature verification is successful.'
  run_tool -v2.1 secured_BL1_V21_info.bin eFuseData_V21.dat -VERIFY
  verdict 'Stage 1: Signature verification is successful.'
  run_tool -v2.1 secured_BL2_V21.bin stage2Key_V21.spk -STAGE2_VERIFY
  verdict 'Stage 2: Signature verification is successful.'
}

walk_v11() {
  run_tool -v1.1 -KEYGEN
  made publicKeyInfo.dat 280
  made privateKey.dat 608
  made eFuseData.dat 16
  owner_only privateKey.dat
  run_tool -v1.1 stage2Key -STAGE2_KEYGEN
  made stage2Key.spk 308
  made stage2Key.prv 640
  owner_only stage2Key.prv
  run cp stage2Key.spk stage2_key.spk
  made stage2_key.spk 308
  run_tool -v1.1 BL1.bin secured_BL1_V11.bin -STAGE1
  verdict 'Stage 1: Signature generation is successful.'
  made secured_BL1_V11.bin $((bl1_length + 512))
  run_tool -v1.1 BL2.bin secured_BL2.bin stage2Key.prv -STAGE2
  verdict 'Stage 2: Signature generation is successful.'
  made secured_BL2.bin $((bl2_length + 128))
  run_tool -v1.1 secured_BL1_V11.bin eFuseData.dat -VERIFY
  verdict 'Stage 1: Signature verification is successful.'
  run_tool -v1.1 secured_BL2.bin stage2Key.spk -STAGE2_VERIFY
  verdict 'Stage 2: Signature verification is successful.'
}

for scheme in 2.1 1.1; do
  banner_shown=
  printf '\n'
  say "Scheme $scheme: the commands as typed in $demo/v$scheme"
  cd "$demo/v$scheme"
  "walk_v${scheme/./}"
done

# --- What there is now.

describe() {
  printf '  %-34s %9s  %s\n' "$1" "$(length_of "$demo/$1")" "$2"
}

printf '\n'
say "Both schemes went through. The files in $demo, with their sizes in bytes:"
describe v2.1/eFuseData_V21.dat "to be fused; it also opens the encrypted BL1, so keep it secret"
describe v2.1/publicKeyInfo_V21.dat "root public key, bound to the eFuse data"
describe v2.1/privateKey_V21.dat "root private key: secret, cannot be made again"
describe v2.1/stage2Key_V21.spk "stage-2 public key"
describe v2.1/stage2Key_V21.prv "stage-2 private key: secret"
describe v2.1/publicKeyInfo_V21_stage2.dat "the stage-2 public key under the name that -STAGE1 reads"
describe v2.1/BL1.bin "first-stage image"
describe v2.1/secured_BL1_V21.bin "sealed BL1: encrypted code and boot context"
describe v2.1/secured_BL1_V21_info.bin "the same with build information"
describe v2.1/BL2.bin "second-stage image"
describe v2.1/secured_BL2_V21.bin "sealed BL2: image and signature"
describe v1.1/eFuseData.dat "to be fused"
describe v1.1/publicKeyInfo.dat "root public key, bound to the eFuse data"
describe v1.1/privateKey.dat "root private key: secret, cannot be made again"
describe v1.1/stage2Key.spk "stage-2 public key"
describe v1.1/stage2Key.prv "stage-2 private key: secret"
describe v1.1/stage2_key.spk "the stage-2 public key under the name that -STAGE1 reads"
describe v1.1/BL1.bin "first-stage image"
describe v1.1/secured_BL1_V11.bin "sealed BL1: image and boot context"
describe v1.1/BL2.bin "second-stage image"
describe v1.1/secured_BL2.bin "sealed BL2: image and signature"
cat <<END

What to do next:
  - These keys are for trying out. For devices, make a folder for each key set, make the root keys
    there with "Sealwright_V21 -v2.1 -KEYGEN" and back them up: the command writes over older ones.
  - Read docs/security.md before you fuse anything.
  - Install the tool and its manual:   cmake --install build/release --prefix DIRECTORY
  - Customers who make and check stage-2 keys and images alone get Sealwright_V21_client.
  - Run the tests:                     scripts/test.sh
END
