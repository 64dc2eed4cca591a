#!/usr/bin/env bash
# Usage: scripts/sign_chains.sh
#
# Seals whole chains with the signers of the working directory, ./sign KEY and, for padded blocks,
# ./bare KEY, and sees that a device boots them: both schemes, in one step and in two, digest and block.
# The public keys are root.pub and release.pub, and with -v11 in their names those of scheme 1.1.
set -euo pipefail

# What this round is: suffix (of the keys' names), steps (1 or 2), padded (the option, or nothing).
seal_step() { # KEY MADE ARGUMENT...
  local key=$1$suffix signer=./sign goes_out=$2.digest
  shift 2
  if [[ -n $padded ]]; then signer=./bare goes_out=${goes_out%.digest}.block; fi
  if ((steps == 1)); then
    Sealwright_seal "$@" ${padded:+"$padded"} -- "$signer" "$key"
  else
    Sealwright_seal "$@" ${padded:+"$padded"} --prepare
    "$signer" "$key" <"$goes_out" >chain/signature
    Sealwright_seal "$@" ${padded:+"$padded"} --signature chain/signature
  fi
}

seal_chain() { # SCHEME ENDING
  rm -rf chain && mkdir chain
  seal_step root "chain/keys/publicKeyInfo$2.dat" root-key --scheme "$1" --public-key "root$suffix.pub" chain/keys
  seal_step release "chain/key$2.spk" stage2-key --scheme "$1" --public-key "release$suffix.pub" chain/key
  seal_step root chain/BL1 bl1 --root chain/keys --stage2-key "chain/key$2.spk" BL1.bin chain/BL1
  seal_step release chain/BL2 bl2 --stage2-key "chain/key$2.spk" BL2.bin chain/BL2
  Sealwright_inspect --boot "chain/keys/eFuseData$2.dat" chain/BL1 chain/BL2
}

for steps in 1 2; do
  for padded in '' --padded; do
    suffix='' && seal_chain 2.1 _V21
    suffix=-v11 && seal_chain 1.1 ''
  done
done
