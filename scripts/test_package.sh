#!/usr/bin/env bash
# Builds the Debian package here and once more in another folder, compares the two, checks the package
# with lintian and tries the completion of command words. Installs what is missing first.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/setup.sh

say "Looking for the compiler and Debian's packaging tools"
need_build_tools
need 'has_command dpkg-shlibdeps' dpkg-dev
need 'has_command lintian' lintian
need 'has_command man' man-db
install_missing

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# make_package FOLDER: sets package to the one built there.
make_package() {
  (
    cd "$1"
    if [[ ! -f build/release/build.ninja ]]; then cmake --preset release -DSEALWRIGHT_TESTS=OFF; fi
    rm -f build/release/*.deb
    cmake --build --preset release --target package -j "$(nproc)"
  ) >"$work/log" 2>&1 || { cat "$work/log"; fail "no package in $1"; }
  package=$(echo "$1"/build/release/*.deb)
}

say "Building the package here and in another folder"
make_package .
first=$package
other=$work/a/folder/with/another/name
mkdir -p "$other"
git ls-files -z | xargs -0 cp --parents -t "$other"
make_package "$other"
cmp "$first" "$package" || fail "two builds give different packages"
say "Two builds gave the same $(stat -c %s "$package") bytes"

# As root, lintian warns of that alone.
lintian --allow-root --fail-on error,warning "$first"
say "lintian has no errors and no warnings"

dpkg-deb -x "$first" "$work/installed"
if grep -rqF -e "$PWD" -e "$other" "$work/installed"; then fail "the package knows where it was built"; fi
for manual in "$work"/installed/usr/share/man/man1/*; do
  if [[ -n $(man --warnings -l "$manual" 2>&1 >/dev/null) ]]; then fail "man warns of $manual"; fi
done

# completes "words typed" "what is offered": the last word is the one being typed.
# shellcheck source=packaging/completion.bash
source "$work/installed/usr/share/bash-completion/completions/Sealwright_V21"
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
completes 'Sealwright_V21_client -v2.1 -' '-help -v -version'
completes 'Sealwright_V21_client -v2.1 BL2.bin k' 'key.prv'
completes 'Sealwright_inspect --' '--boot --help --json --pem --version'
completes 'Sealwright_inspect --boot B' 'BL1.bin'
say "Command words and files are completed where they go"
