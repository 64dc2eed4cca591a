#!/usr/bin/env bash
# Usage: scripts/test_recipes.sh [--one-way] [FOLDER OF A PROGRAM...]     (default: the release build's)
#
# Runs what the documents tell a reader to type, exactly as printed, and the examples of the manual
# pages. A block of a document is run when a comment stands before it:
#
#   <!-- run -->              in a fresh folder with keys and images of both schemes
#   <!-- run on -->           where the block before it ended
#   <!-- run before all -->   once more before each later block of the document
#   <!-- run, chains -->      and then whole chains with its signers, as sign_chains.sh says
#   <!-- run, refuse FILE@OFFSET... -->   and once for each FILE with a byte changed, when it must fail
#                             (without OFFSET the middle one; below 0 counted from the end)
#   <!-- run on, file NAME -->            is no command but becomes the file NAME there
#
# A block of commands ends with the status of its commands. It is run three times: as it stands, as the
# condition of an "if", and between two "||", where bash ignores "set -e"; all three must accept and
# refuse alike. With --one-way it is run as it stands alone. In a block with "$ " prompts, the lines after a command must be in what it prints,
# whatever times and fingerprints they have.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
all_ways=(if or line)
if [[ ${1:-} == --one-way ]]; then all_ways=(line) && shift; fi
if (($# == 0)); then set -- "$root"/build/release/{front,inspect,seal}; fi
for folder in "$@"; do
  folder=$(cd "$folder" && pwd)
  PATH=$folder:$PATH
  # Where programs are installed, CMake finds their build rules by PATH; those of a build have to be named.
  if [[ -e $folder/../SealwrightConfig.cmake ]]; then export Sealwright_DIR=${folder%/*}; fi
done
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# What the blocks make by mktemp outside this folder is noted: rooms in memory, for keys.
mkdir programs
cat >programs/mktemp <<END
#!/bin/sh
made=\$($(command -v mktemp) "\$@") && echo "\$made" | tee -a "$work/rooms"
END
chmod +x programs/mktemp
touch rooms
PATH=$work/programs:$PATH

fail() {
  printf 'error: %s\n' "$*" >&2
  exit 1
}

# The signing host of the documents is this machine.
mkdir host
printf '#!/bin/sh\nshift\nexec sh -c "$*"\n' >host/ssh
chmod +x host/ssh
PATH=$work/host:$PATH

# The examples of the manual pages; those of the frozen programs go through both schemes, from keys to
# verified images, and leave the files that blocks begin with.
mkdir fresh
head -c 15360 /dev/urandom >fresh/BL1.bin
head -c 61441 /dev/urandom >fresh/BL2.bin
for program in Sealwright_V21_client Sealwright_V21 Sealwright_inspect Sealwright_seal; do
  sed -n '/^\.EX/,/^\.EE/{/^\.E[XE]/d;s/\\-/-/g;s/\\e$/\\/;p}' "$root/docs/$program.1" >examples.sh
  folder=fresh
  if [[ $program == Sealwright_seal ]]; then folder=seal && cp -a fresh seal; fi
  (cd "$folder" && bash -e -o pipefail ../examples.sh) >>output || fail "the examples of $program(1)"
done
(($(grep -c '^Stage .: Signature verification is successful.$' output) == 6)) ||
  fail "an example of the manual pages did not end with a valid image"
echo "Ran the manual pages' examples"

# Times and fingerprints, which differ from run to run, made equal.
mask() { sed -e 's/\([0-9a-f]\{4\} \?\)\{10\}/FINGERPRINT/' -e 's/20..-..-.. ..:..:../TIME/'; }
export -f mask

# Takes a document apart into NUMBER.sh and NUMBER.marker.
split_document() {
  # Blocks in a list are indented.
  sed 's/^   \(   \)\?\(<!--\|```\)/\2/' "$1" | mask | awk '
    /^<!-- run.*-->$/ { marker = $0; next }
    /^```/ && name != "" {
      if (file != "") print "END_OF_FILE" >(name ".sh")
      name = file = ""
      next
    }
    /^```/ && marker != "" {
      name = sprintf("%03d", ++count)
      print marker >(name ".marker")
      if (match(marker, /file [^ ]+/)) {
        file = substr(marker, RSTART + 5, RLENGTH - 5)
        print "cat >" file " <<\"END_OF_FILE\"" >(name ".sh")
      }
      prompts = $0 == "```" && file == ""
      if (prompts) printf "" >(name ".prompts")
      marker = ""
      next
    }
    name == "" { next }
    prompts && /^\$ / { print "output=$(" substr($0, 3) "); output=$(mask <<<\"$output\")" >(name ".sh"); next }
    prompts { $0 = "grep -q -F -x -- '\''" $0 "'\'' <<<\"$output\"" }
    { print >(name ".sh") }'
}

change_byte() {
  local file=${1%@*} offset=${1##*@} length
  length=$(stat -c %s "$file")
  if [[ $offset == "$1" ]]; then offset=$((length / 2)); fi
  if ((offset < 0)); then offset=$((length + offset)); fi
  perl -e 'open F, "+<", $ARGV[0] or die; seek F, $ARGV[1], 0; read F, $b, 1; seek F, $ARGV[1], 0;
    print F $b ^ "\x40"' "$file" "$offset"
}

# Runs a block in a folder, as a line of a script or as part of a condition. Without a terminal, OpenSSL
# takes passphrases from standard input, where it may read ahead for a page: lines of 16 bytes, so that
# each of several runs begins with a whole one.
run_block() {
  local way=$1 folder=$2 block=$3
  {
    cat "$before_all"
    case $way in
      line) cat "$block" ;;
      if) printf 'recipe() {\n%s\n}\nif recipe; then exit 0; else exit 1; fi\n' "$(<"$block")" ;;
      or) printf 'recipe() {\n%s\n}\nfalse || recipe || exit 1\n' "$(<"$block")" ;;
    esac
  } >block.sh
  (cd "$folder" && setsid bash -e ../block.sh >../output 2>&1 < <(yes 'a passphrase 15'))
}

for document in "$root"/README.md "$root"/docs/*.md; do
  rm -rf ./*.marker ./*.prompts ./[0-9]*.sh room
  split_document "$document"
  before_all=/dev/null
  blocks=0 refusals=0
  for marker_file in ./*.marker; do
    [[ -e $marker_file ]] || continue
    marker=$(<"$marker_file")
    block=${marker_file%.marker}.sh
    what="${document##*/}, block $(grep -m 1 . "$block")"
    if [[ $marker == *'before all'* ]]; then
      before_all=$block
      continue
    fi
    ways=("${all_ways[@]}")
    if [[ -e ${marker_file%.marker}.prompts || $marker == *' file '* ]]; then ways=(line); fi
    if [[ $marker == *'run on'* ]]; then cp -a room start; else cp -a fresh start; fi
    read -r -a changes < <(sed -n 's/.*refuse \(.*\) -->/\1/p' "$marker_file") || true
    for way in "${ways[@]}"; do
      for change in "${changes[@]}"; do
        rm -rf room && cp -a start room
        (cd room && change_byte "$change")
        if run_block "$way" room "$block"; then fail "$what: accepts a change of $change, as $way"; fi
        refusals=$((refusals + 1))
      done
      rm -rf room && cp -a start room
      run_block "$way" room "$block" || { cat output >&2; fail "$what, as $way"; }
    done
    rm -rf start
    if [[ $marker == *chains* ]]; then
      (cd room && "$root/scripts/sign_chains.sh" >../output 2>&1) || { cat output >&2; fail "$what: chains"; }
    fi
    blocks=$((blocks + 1))
  done
  if ((blocks > 0)); then echo "Ran $blocks blocks of ${document##*/}; $refusals refusals"; fi
done
[[ -s rooms ]] || fail "no document makes a room in memory for keys"
while read -r room; do
  [[ ! -e $room ]] || fail "keys are left in $room"
done <rooms
