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
readonly build_info_length=48      # bytes that -P adds
readonly sample_bl1_length=15360   # 16 KiB when sealed by scheme 2.1
readonly sample_bl2_length=614399  # BL2 may have any length

length_of() { stat -L -c %s -- "$1"; }

check_bl1_length() {
  local length=$1 name=$2
  local rest=$((length % block_length))
  if ((rest == 0)); then return; fi
  fail "$name has $length bytes. Scheme 2.1 encrypts BL1 in blocks of $block_length bytes, and the" \
    "tool refuses other lengths without a message. Pad it with zero bytes, for example with" \
    "'truncate -s $((length - rest + block_length)) $(printf %q "$name")', and run this again."
}

# --- What to work on: checked before anything is installed, built or written.

if (($# > 2)); then fail "usage: scripts/quickstart.sh [BL1 [BL2]]"; fi
for image in "$@"; do
  [[ -f $image && -r $image ]] || fail "no readable file: $image"
done
if (($# > 0)); then check_bl1_length "$(length_of "$1")" "$1"; fi
demo=${SEALWRIGHT_DEMO:-sealwright-demo}
if [[ $demo == -* ]]; then demo=./$demo; fi  # a name, not an option
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
  build_alone release cmake --build --preset release --target sealwright_main sealwright_client \
    sealwright_inspect_main sealwright_seal_main
)
export PATH="$root/build/release/front:$root/build/release/inspect:$root/build/release/seal:$PATH"

# --- The images.

mkdir -p "$demo"/v{2.1,1.1}
demo=$(cd "$demo" && pwd)
say "The folder is $demo"
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
make_or_copy BL1.bin "$sample_bl1_length" "${1:-}"
make_or_copy BL2.bin "$sample_bl2_length" "${2:-}"

# --- The walk, by the frozen commands and by Sealwright_seal. The exit status of Sealwright_V21 does not
# tell success from failure (see the manual), so each of its steps is judged by its verdict line and by
# the files that it must have written.

stop() {
  fail "stopped: $*. What was made so far is in $demo."
}

# The names and lengths of a scheme's files.
set_scheme() {
  scheme=$1
  if [[ $scheme == 2.1 ]]; then
    public_info=publicKeyInfo_V21.dat private_key=privateKey_V21.dat efuse=eFuseData_V21.dat
    spk=stage2Key_V21.spk prv=stage2Key_V21.prv sealed_in=publicKeyInfo_V21_stage2.dat
    secured_bl1=secured_BL1_V21.bin secured_bl2=secured_BL2_V21.bin release=release_V21.spk
    lengths=([public_info]=548 [private_key]=1200 [efuse]=20 [spk]=548 [prv]=1200)
    context_length=1024 signature_length=256
  else
    public_info=publicKeyInfo.dat private_key=privateKey.dat efuse=eFuseData.dat
    spk=stage2Key.spk prv=stage2Key.prv sealed_in=stage2_key.spk
    secured_bl1=secured_BL1_V11.bin secured_bl2=secured_BL2.bin release=release.spk
    lengths=([public_info]=280 [private_key]=608 [efuse]=16 [spk]=308 [prv]=640)
    context_length=512 signature_length=128
  fi
}
declare -A lengths

# Runs a command as typed and shows what it prints; of the tool's banners only the first.
run() {
  printf '\n$ %s\n' "$*"
  status=0
  output=$("$@" 2>&1) || status=$?
  if [[ -z $output ]]; then return; fi
  if [[ -z $banner_shown ]]; then
    printf '%s\n' "$output"
    say "Each command prints this banner; it is left out from here on."
    banner_shown=yes
  else
    # From the empty first line and the title to the empty line after the notice.
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

# The same for a key file, under the name of its variable; owner: nobody else may read it.
made_key() {
  made "${!1}" "${lengths[$1]}"
  if [[ ${2:-} == owner && $(stat -c %a "${!1}") != 600 ]]; then stop "others may read ${!1}"; fi
}

# Seals BL1 and checks it; the words after the first two follow -STAGE1.
seal_bl1() {
  local output_name=$1 added=$2
  run Sealwright_V21 "-v$scheme" BL1.bin "$output_name" -STAGE1 "${@:3}"
  verdict 'Stage 1: Signature generation is successful.'
  made "$output_name" $(($(length_of BL1.bin) + added))
  run Sealwright_V21 "-v$scheme" "$output_name" "$efuse" -VERIFY
  verdict 'Stage 1: Signature verification is successful.'
}

walk() {
  banner_shown=
  run Sealwright_V21 "-v$scheme" -KEYGEN
  made_key public_info
  made_key private_key owner
  if [[ $scheme == 2.1 ]]; then made_key efuse owner; else made_key efuse; fi
  run Sealwright_V21 "-v$scheme" stage2Key -STAGE2_KEYGEN
  made_key spk
  made_key prv owner
  run cp "$spk" "$sealed_in"
  seal_bl1 "$secured_bl1" "$context_length"
  if [[ $scheme == 2.1 ]]; then
    seal_bl1 secured_BL1_V21_info.bin $((build_info_length + context_length)) -P
  fi
  run Sealwright_V21 "-v$scheme" BL2.bin "$secured_bl2" "$prv" -STAGE2
  verdict 'Stage 2: Signature generation is successful.'
  made "$secured_bl2" $(($(length_of BL2.bin) + signature_length))
  run Sealwright_V21 "-v$scheme" "$secured_bl2" "$spk" -STAGE2_VERIFY
  verdict 'Stage 2: Signature verification is successful.'
  succeed Sealwright_inspect --boot "$efuse" "$secured_bl1" "$secured_bl2"
}

# Runs a command whose exit status is true.
succeed() {
  run "$@"
  ((status == 0)) || stop "the last command ended with status $status"
}

walk_with_proof() {
  succeed Sealwright_seal root-key --scheme "$scheme" keys
  succeed Sealwright_seal stage2-key --scheme "$scheme" release
  succeed Sealwright_seal bl1 --root keys --stage2-key "$release" BL1.bin proved_BL1.bin
  succeed Sealwright_seal bl2 --stage2-key "$release" BL2.bin proved_BL2.bin
  succeed Sealwright_inspect --boot --code BL1.bin "keys/$efuse" proved_BL1.bin proved_BL2.bin
}

for version in 2.1 1.1; do
  set_scheme "$version"
  printf '\n'
  say "Scheme $scheme: the commands as typed in $demo/v$scheme"
  cd "$demo/v$scheme"
  walk
  printf '\n'
  say "The same with Sealwright_seal, which proves what it makes and replaces no key:"
  walk_with_proof
done

# --- What there is now.

describe() {
  printf '  %-34s %9s  %s\n' "v$scheme/$1" "$(length_of "$demo/v$scheme/$1")" "$2"
}

printf '\n'
say "Both schemes went through. The files in $demo, with their sizes in bytes:"
for version in 2.1 1.1; do
  set_scheme "$version"
  if [[ $scheme == 2.1 ]]; then
    describe "$efuse" "to be fused; it also opens the encrypted BL1, so keep it secret"
  else
    describe "$efuse" "to be fused"
  fi
  describe "$public_info" "root public key, bound to the eFuse data"
  describe "$private_key" "root private key: secret, cannot be made again"
  describe "$spk" "stage-2 public key"
  describe "$prv" "stage-2 private key: secret, cannot be made again"
  describe "$sealed_in" "the stage-2 public key under the name that -STAGE1 reads"
  describe BL1.bin "first-stage image"
  describe "$secured_bl1" "sealed BL1: code and boot context"
  if [[ $scheme == 2.1 ]]; then describe secured_BL1_V21_info.bin "the same with build information"; fi
  describe BL2.bin "second-stage image"
  describe "$secured_bl2" "sealed BL2: image and signature"
  describe "$release" "stage-2 public key of Sealwright_seal; its private half and keys/ belong to it"
  describe proved_BL1.bin "BL1 sealed by Sealwright_seal"
  describe proved_BL2.bin "BL2 sealed by Sealwright_seal"
done
cat <<END

What to do next:
  - These keys are for trying out. For devices, make the root keys with "Sealwright_seal root-key FOLDER",
    which never replaces any, and back the folder up.
  - Read docs/security.md before you fuse anything, and docs/keys.md on keeping keys.
  - Install the tool and its manual:   cmake --install build/release --prefix DIRECTORY
  - docs/customers.md says what customers get, who sign their own second stage.
  - Run the tests:                     scripts/test.sh
END
