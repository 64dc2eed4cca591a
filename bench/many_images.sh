#!/usr/bin/env bash
# Usage: bench/many_images.sh [IMAGES]        (default 400)
#
# How many images of 64 KiB a second Sealwright_seal makes from one folder of keys, with one job and with
# one for each processor; the best of three rounds. The files lie in TMPDIR: set it to a memory file
# system to leave the disk out. Run it on a machine that has nothing else to do.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
readonly images=${1:-400} rounds=3
PATH=$root/build/release/seal:$PATH
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

Sealwright_seal root-key keys >/dev/null
Sealwright_seal stage2-key keys/release >/dev/null
mkdir images sealed
for ((i = 0; i < images; i++)); do head -c 65536 /dev/urandom >"images/$i"; done

# best_of COMMAND...: images a second.
best_of() {
  local round start best=0 rate
  for ((round = 0; round < rounds; round++)); do
    rm -f sealed/*
    start=${EPOCHREALTIME/[.,]/}
    "$@" >/dev/null
    rate=$((images * 1000000 / (${EPOCHREALTIME/[.,]/} - start)))
    if ((rate > best)); then best=$rate; fi
  done
  echo "$best"
}

by_xargs() {
  (cd images && printf '%s\0' *) | xargs -0 -P "$1" -I{} Sealwright_seal "${@:2}" \
    --stage2-key keys/release_V21.spk images/{} sealed/{}
}

by_parallel() {
  (cd images && printf '%s\n' *) | SHELL=/bin/sh parallel -j "$1" Sealwright_seal "${@:2}" \
    --stage2-key keys/release_V21.spk images/{} sealed/{}
}

printf '| Jobs | bl1, xargs | bl2, xargs | bl1, parallel |\n|---|---|---|---|\n'
for jobs in 1 "$(nproc)"; do
  printf '| %s | %s | %s | %s |\n' "$jobs" "$(best_of by_xargs "$jobs" bl1 --root keys)" \
    "$(best_of by_xargs "$jobs" bl2)" "$(best_of by_parallel "$jobs" bl1 --root keys)"
done
