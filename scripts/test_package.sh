#!/usr/bin/env bash
# Builds what is handed out, here and once more in another folder: both Debian packages and the archive
# for customers. Compares the two builds, checks the packages with lintian, installs them in an empty
# root, walks through what they hold and removes them, and tries the completion of command words.
# Installs what is missing first.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/setup.sh
readonly source_folder=$PWD

say "Looking for what the tests need, and Debian's packaging tools"
need_test_tools  # the documents are walked through as installed
need_package_tools
install_missing

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# Whether sources are joined, here and so there as well.
joined=$(sed -n 's/^CMAKE_UNITY_BUILD:.*=//p' build/release/CMakeCache.txt 2>/dev/null || true)
# make_all FOLDER: sets made to what was built there: client package, archive, package.
make_all() {
  (
    cd "$1"
    if [[ ! -f build/release/build.ninja ]]; then
      cmake --preset release -DSEALWRIGHT_TESTS=OFF -DCMAKE_UNITY_BUILD="${joined:-OFF}"
    fi
    rm -f build/release/*.deb build/release/*.tar.gz
    build_alone release cmake --build --preset release --target package bundle -j "$(nproc)"
  ) >"$work/log" 2>&1 || { cat "$work/log"; fail "no packages in $1"; }
  made=("$1"/build/release/sealwright-client*.{deb,tar.gz} "$1"/build/release/sealwright_*.deb)
}

say "Building packages and archive here and in another folder"
make_all "$source_folder"
client=${made[0]} archive=${made[1]} signing=${made[2]}
other=$work/a/folder/with/another/name
mkdir -p "$other"
git ls-files -z | xargs -0 cp --parents -t "$other"
make_all "$other"
for index in 0 1 2; do
  file=$(basename "${made[index]}")
  cmp "build/release/$file" "${made[index]}" || fail "two builds give different $file"
  say "Two builds gave the same $(stat -c %s "${made[index]}") bytes of $file"
done

# As root, lintian warns of that alone.
lintian --allow-root --fail-on error,warning "$client" "$signing"
say "lintian has no errors and no warnings"

# --- Installed in an empty root: the customers' package alone, then both, then none.

root=$work/root
mkdir -p "$root"/var/lib/dpkg/{info,updates}
touch "$root/var/lib/dpkg/status"
# The C library is that of this system.
package_tool() {
  local as_root=()
  if ((EUID != 0)); then as_root=(fakeroot); fi
  PATH=$PATH:/usr/sbin:/sbin "${as_root[@]}" dpkg --root="$root" --ignore-depends=libc6 "$@" >"$work/log" 2>&1
}
# The files and links of a root, but for those of the package manager.
files_in() { (cd "$1" && find . -path ./var -prune -o \( -type f -o -type l \) -print | sort); }

# sound_documents FOLDER: every document that a document or manual page there names is there, every
# manual page is written without a slip, and nothing knows where it was built.
sound_documents() {
  local page name
  while read -r page name; do
    [[ -e $(find "$1" -name "$name" -print -quit) ]] || fail "$page names $name, which is not handed out with it"
  done < <(find "$1" -name '*.md' -o -name '*.1*' -type f | while read -r page; do
    { zcat -f "$page" | grep -o -E '\b[A-Za-z0-9_]+\.(md|svg)\b' || true; } | sort -u | sed "s|^|${page##*/} |"
  done)
  while read -r page; do
    if [[ -n $(man --warnings -l "$page" 2>&1 >/dev/null) ]]; then fail "man warns of $page"; fi
  done < <(find "$1" -path '*/man1/*')
  if grep -rqF -e "$source_folder" -e "$other" "$1"; then fail "what is handed out knows where it was built"; fi
}

# customer_walk FOLDER_OF_PROGRAMS: what a customer does, with these programs alone.
customer_walk() (
  mkdir "$work/walk"
  cd "$work/walk"
  PATH=$1:/usr/bin:/bin
  head -c 1600 /dev/urandom >BL1.bin
  head -c 1601 /dev/urandom >BL2.bin
  Sealwright_seal root-key keys && Sealwright_seal stage2-key release &&
    Sealwright_seal bl1 --root keys --stage2-key release_V21.spk BL1.bin secured_BL1.bin &&
    Sealwright_seal bl2 --stage2-key release_V21.spk BL2.bin secured_BL2.bin &&
    Sealwright_inspect secured_BL1.bin secured_BL2.bin release_V21.spk &&
    Sealwright_V21_client -v2.1 secured_BL2.bin release_V21.spk -STAGE2_VERIFY |
    grep -q -x 'Stage 2: Signature verification is successful.' &&
    for program in Sealwright_seal Sealwright_inspect; do
      [[ $("$program" --version) == "$program $version" ]] || exit 1
    done
  rm -r "$work/walk"
)
version=$(dpkg-deb -f "$client" Version)

if package_tool --install "$signing"; then fail "sealwright is installed without sealwright-client"; fi
package_tool --purge sealwright || { cat "$work/log"; fail "a half installed package stays"; }
package_tool --install "$client" || { cat "$work/log"; fail "$client is not installed"; }
customer_walk "$root/usr/bin" >"$work/log" || { cat "$work/log"; fail "the customers' package does not work alone"; }
sound_documents "$root/usr"
say "sealwright-client works alone, and no document names what is missing"

package_tool --install "$signing" || { cat "$work/log"; fail "$signing is not installed"; }
sound_documents "$root/usr"
for document in README.md CONTRIBUTING.md CHANGELOG.md LICENSE docs/*.{md,svg}; do
  [[ -s $root/usr/share/doc/sealwright/$document ]] || fail "not in the packages: $document"
done
for page in docs/*.1; do
  [[ -s $root/usr/share/man/man1/${page##*/}.gz ]] || fail "not in the packages: $page"
done
scripts/test_recipes.sh --one-way "$root/usr/bin" >"$work/log" || { cat "$work/log"; fail "the documents do not hold as installed"; }
say "All documents hold with both packages installed"

if package_tool --remove sealwright-client; then fail "sealwright stays without sealwright-client"; fi
package_tool --purge sealwright sealwright-client || { cat "$work/log"; fail "not removed"; }
[[ -z $(files_in "$root") ]] || fail "left after removal: $(files_in "$root")"
say "Both packages are gone without a trace"

# --- The archive.

tar -C "$work" -xzf "$archive"
bundle=$(echo "$work"/sealwright-client-*/)
customer_walk "${bundle}bin" >"$work/log" || { cat "$work/log"; fail "the archive for customers does not work alone"; }
sound_documents "$bundle"
for page in "$bundle"share/man/man1/*.1; do
  name=$(basename "$page" .1)
  [[ $(MANPATH=${bundle}share/man: man -w "$name") == "$page" ]] || fail "man does not find $name by MANPATH"
done
say "The archive for customers works alone, and no document names what is missing"

# --- Completion.

# completes "words typed" "what is offered": the last word is the one being typed.
# shellcheck source=packaging/completion.bash
source "${bundle}share/bash-completion/completions/Sealwright_seal"
completes() {
  read -r -a COMP_WORDS <<<"$1"
  if [[ $1 == *' ' ]]; then COMP_WORDS+=(''); fi
  COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
  local completer
  completer=$(complete -p "${COMP_WORDS[0]}")
  COMPREPLY=()
  "$(awk '{print $3}' <<<"$completer")" "${COMP_WORDS[0]}" "${COMP_WORDS[COMP_CWORD]}" || true
  [[ $(printf '%s\n' "${COMPREPLY[@]}" | sort | paste -s -d ' ') == "$2" ]] ||
    fail "'$1' completes to '${COMPREPLY[*]}', not '$2'"
}
mkdir "$work/files" && cd "$work/files" && touch BL1.bin key.prv
completes 'Sealwright_V21 ' '-v1.1 -v2.1'
completes 'Sealwright_V21 -v2.1 -K' '-KEYGEN'
completes 'Sealwright_V21 -v2.1 B' 'BL1.bin'
completes 'Sealwright_V21 -v2.1 BL1.bin out -' '-STAGE1 -STAGE2_VERIFY -VERIFY'
completes 'Sealwright_V21 -v2.1 BL1.bin out -STAGE1 ' '-P'
completes 'Sealwright_V21 -v1.1 BL1.bin out -STAGE1 ' ''
completes 'Sealwright_V21 -v2.1 BL1.bin out key.prv ' '-STAGE2'
completes 'Sealwright_V21 -v2.1 -KEYGEN ' ''
completes 'Sealwright_seal b' 'bl1 bl2'
completes 'Sealwright_seal bl1 --root . --s' '--signature --stage2-key'
completes 'Sealwright_seal root-key --scheme ' '1.1 2.1'
completes 'Sealwright_seal export-key k' 'key.prv'
completes 'Sealwright_V21_client -v2.1 -' '-help -v -version'
completes 'Sealwright_V21_client -v2.1 BL2.bin k' 'key.prv'
completes 'Sealwright_inspect --' '--boot --help --json --pem --version'
completes 'Sealwright_inspect --boot B' 'BL1.bin'
completes 'Sealwright_inspect --boot --' '--code --json'
completes 'Sealwright_seal ' '--help --version bl1 bl2 export-key root-key stage2-key'
completes 'Sealwright_seal root-key --scheme ' '1.1 2.1'
completes 'Sealwright_seal bl1 --root keys --' '-- --build-info --help --json --padded --prepare --signature --stage2-key'
completes 'Sealwright_seal bl2 --stage2-key k' 'key.prv'
completes 'Sealwright_seal export-key k' 'key.prv'
completes 'Sealwright_seal bl2 a b -- sign k' 'key.prv'
say "Command words and files are completed where they go"
