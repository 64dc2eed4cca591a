#!/usr/bin/env bash
# Times whole commands of the tool against the OpenSSL command line doing the same work, and the
# primitives against OpenSSL's in one process, and prints a table of ratios (ours / theirs).
# bench/speed_chart.sh makes the chart of such a table.
#
#   bench/side_by_side.sh [runs [keygen runs]]
#
# runs: repetitions of each command, 7 by default; of key generation, which scatters widely, 200.
#
# Needs cmake, ninja, Google Benchmark, openssl and GNU time, and about 4 GiB of room under TMPDIR.
set -euo pipefail
cd "$(dirname "$0")/.."
runs=${1:-7}
keygen_runs=${2:-200}

for tool in cmake ninja openssl /usr/bin/time; do
  command -v "$tool" >/dev/null || { echo "side_by_side: $tool is missing" >&2; exit 1; }
done
cmake --preset bench >/dev/null
cmake --build --preset bench >/dev/null
tool=$PWD/build/bench/front/Sealwright_V21
primitives=$PWD/build/bench/bench/primitives

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
export LC_ALL=C

median() { sort -g | awk '{v[NR] = $1} END {print (v[int((NR + 1) / 2)] + v[int(NR / 2) + 1]) / 2}'; }

# wall <command...>: seconds from start to end.
wall() {
  local start=$EPOCHREALTIME
  "$@" >/dev/null 2>&1
  local end=$EPOCHREALTIME
  echo "$start $end" | awk '{printf "%.6f\n", $2 - $1}'
}
# cpu <command...>: user and system seconds, which a busy machine lengthens least. cpu_of_ten: the
# tenth of those of ten runs, for a command that is over in a few clock ticks.
cpu() {
  local TIMEFORMAT='%U %S'
  { time "$@" >/dev/null 2>&1; } 2>&1 | awk '{print $1 + $2}'
}
ten_times() { for _ in {1..10}; do "$@"; done; }
cpu_of_ten() { cpu ten_times "$@" | awk '{print $1 / 10}'; }

print_row() { printf '| %-42s | %-38s | %9s | %9s | %5s | %8s | %5s |\n' "$@"; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN {printf "%.2f", a / b}'; }
milli() { awk -v a="$1" 'BEGIN {printf "%.2f ms", a * 1000}'; }

# compare <work> <against> <aim> <measure> <repetitions> <ours> <theirs>: both functions take turns,
# so that a slow moment of the machine meets both. One unmeasured turn each warms the page cache.
compare() {
  local work=$1 against=$2 aim=$3 measure=$4 repetitions=$5 ours=$6 theirs=$7 i
  "$ours" >/dev/null 2>&1
  "$theirs" >/dev/null 2>&1
  : >ours.txt
  : >theirs.txt
  for ((i = 0; i < repetitions; ++i)); do
    "$measure" "$ours" >>ours.txt
    "$measure" "$theirs" >>theirs.txt
  done
  local a b
  a=$(median <ours.txt)
  b=$(median <theirs.txt)
  print_row "$work" "$against" "$(milli "$a")" "$(milli "$b")" "$(ratio "$a" "$b")" "" "$aim"
}

make_file() { head -c "$1" /dev/urandom >"$2"; }
make_file 16384 small.bin
make_file $((64 << 20)) medium.bin
make_file $((256 << 20)) large.bin
"$tool" -v2.1 -KEYGEN >/dev/null
"$tool" -v2.1 key -STAGE2_KEYGEN >/dev/null
cp key_V21.spk publicKeyInfo_V21_stage2.dat
openssl genrsa -3 -out key.pem 2048 2>/dev/null
openssl rsa -in key.pem -pubout -out public.pem 2>/dev/null

pss=(-sigopt rsa_padding_mode:pss -sigopt rsa_pss_saltlen:20)
aes=(-aes-128-cbc -nopad -K 000102030405060708090a0b0c0d0e0f -iv 0f0e0d0c0b0a09080706050403020100)
stage2_small() { "$tool" -v2.1 small.bin out.bin key_V21.prv -STAGE2; }
openssl_sign_small() { openssl dgst -sha1 -sign key.pem "${pss[@]}" -out small.sig small.bin; }
stage2_large() { "$tool" -v2.1 large.bin out.bin key_V21.prv -STAGE2; }
openssl_sign_large() {
  cp large.bin theirs.bin
  openssl dgst -sha1 -sign key.pem "${pss[@]}" -out large.sig large.bin
  cat large.sig >>theirs.bin
}
verify_large() { "$tool" -v2.1 out.bin key_V21.spk -STAGE2_VERIFY; }
openssl_verify_large() {
  openssl dgst -sha1 -verify public.pem "${pss[@]}" -signature large.sig large.bin
}
stage1_medium() { "$tool" -v2.1 medium.bin out1.bin -STAGE1; }
openssl_seal_medium() {
  openssl enc "${aes[@]}" -in medium.bin -out medium.enc
  openssl enc -d "${aes[@]}" -in medium.enc -out medium.dec
  openssl dgst -sha1 -sign key.pem "${pss[@]}" -out medium.sig medium.enc
  cat medium.sig >>medium.enc
}
mkdir keys
keygen_v21() { (cd keys && "$tool" -v2.1 -KEYGEN); }
openssl_keygen_v21() { openssl genrsa -3 2048; }
keygen_v11() { (cd keys && "$tool" -v1.1 -KEYGEN); }
openssl_keygen_v11() { openssl genrsa 1024; }

echo "Machine: $(awk -F': ' '/model name/ {print $2; exit}' /proc/cpuinfo), $(nproc) cores;" \
  "$(openssl version | cut -d' ' -f1,2); medians of the CPU time of $runs runs" \
  "($keygen_runs for key generation)."
echo
print_row Work Against Ours OpenSSL Ratio Portable Aim
print_row --- --- --- --- --- --- ---
compare '`-STAGE2`, 16 KiB, v2.1' '`dgst -sha1 -sign` with PSS' 0.5 cpu_of_ten "$runs" \
  stage2_small openssl_sign_small
compare '`-STAGE2`, 256 MiB' 'copy, `dgst -sign`, append' 1.0 cpu "$runs" \
  stage2_large openssl_sign_large
compare '`-STAGE2_VERIFY`, 256 MiB' '`dgst -verify`' 1.0 cpu "$runs" \
  verify_large openssl_verify_large
compare '`-STAGE1`, 64 MiB' '`enc`, `enc -d`, `dgst -sign`, append' 1.0 cpu "$runs" \
  stage1_medium openssl_seal_medium
compare '`-v2.1 -KEYGEN`' '`genrsa -3 2048`' 0.5 cpu "$keygen_runs" \
  keygen_v21 openssl_keygen_v21
compare '`-v1.1 -KEYGEN`' '`genrsa 1024`' 0.8 cpu "$keygen_runs" \
  keygen_v11 openssl_keygen_v11

"$primitives" --benchmark_filter='^(Sha1|AesCbc|Rsa)' --benchmark_format=csv --benchmark_repetitions=5 \
  --benchmark_enable_random_interleaving=true \
  --benchmark_report_aggregates_only=true 2>/dev/null >primitives.csv
# In-process medians of CPU time in nanoseconds; the last column but one is the ratio without the
# processor's own paths.
nanoseconds() { awk -F, -v name="\"$1_median\"" '$1 == name {print $4}' primitives.csv; }
micro() { awk -v a="$1" 'BEGIN {printf "%.1f us", a / 1000}'; }
primitive_row() {
  local ours portable theirs
  ours=$(nanoseconds "$3")
  portable=$(nanoseconds "$4")
  theirs=$(nanoseconds "$5")
  print_row "$1" 'in process' "$(micro "$ours")" "$(micro "$theirs")" "$(ratio "$ours" "$theirs")" \
    "$(ratio "$portable" "$theirs")" "$2"
}
primitive_row 'SHA-1, 16 KiB' 1.05 Sha1/0 Sha1/1 Sha1_OpenSSL
primitive_row 'AES-128-CBC encryption, 16 KiB' 1.05 AesCbc/path:0/encrypt:1 \
  AesCbc/path:1/encrypt:1 AesCbc_OpenSSL/encrypt:1
primitive_row 'AES-128-CBC decryption, 16 KiB' 1.25 AesCbc/path:0/encrypt:0 \
  AesCbc/path:1/encrypt:0 AesCbc_OpenSSL/encrypt:0
primitive_row 'RSA-2048 CRT signature' 5 RsaSign/0 RsaSign/1 RsaSign_OpenSSL
primitive_row 'RSA-2048 verification, e = 3' 0.65 RsaVerify/0 RsaVerify/1 RsaVerify_OpenSSL
echo
echo "CRT signature, against ours with assembly: on portable words" \
  "$(ratio "$(nanoseconds RsaSign/1)" "$(nanoseconds RsaSign/0)") (aim 1.5), on digits" \
  "$(ratio "$(nanoseconds RsaSign/2)" "$(nanoseconds RsaSign/0)")"

echo
echo 'Growth of "-STAGE2", beside the straight line from 1 MiB to 1 GiB:'
for mebibytes in 1 16 64 256 1024; do
  make_file $((mebibytes << 20)) grow.bin
  grow() { "$tool" -v2.1 grow.bin grow.out key_V21.prv -STAGE2; }
  grow >/dev/null
  for ((i = 0; i < runs; ++i)); do wall grow; done | median | awk -v m=$mebibytes '{print m, $1}'
done >growth.txt
awk '{m[NR] = $1; t[NR] = $2}
  END {for (i = 1; i <= NR; ++i) {
    line = t[1] + (t[NR] - t[1]) * (m[i] - m[1]) / (m[NR] - m[1])
    printf "  %5d MiB %9.1f ms   %+6.1f %% of the line\n", m[i], t[i] * 1000, 100 * (t[i] / line - 1)
  }}' growth.txt
rm -f grow.bin grow.out

echo
echo 'Peak memory:'
peak() { /usr/bin/time -f %M "$@" 2>&1 >/dev/null | tail -n 1; }
printf '  "-STAGE2" on 256 MiB: image + %.1f MiB (wanted: at most 4)\n' \
  "$(peak "$tool" -v2.1 large.bin out.bin key_V21.prv -STAGE2 | awk '{print $1 / 1024 - 256}')"
printf '  "-STAGE1" on 64 MiB: 3 x image + %.1f MiB (wanted: at most 4)\n' \
  "$(peak "$tool" -v2.1 medium.bin out1.bin -STAGE1 | awk '{print $1 / 1024 - 192}')"
echo
echo 'Ratio: ours / OpenSSL, lower is better. Figures of one run compare; those of two runs do not.'
