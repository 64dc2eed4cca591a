#!/usr/bin/env bash
# Usage: scripts/style.sh [--fix]
#
# Checks what a reader would otherwise have to: the form of the sources (clang-format), the findings of
# clang-tidy in product and tests, the directions of the includes, and the scripts (shellcheck). With
# --fix it mends what the two clang tools can mend. Installs what is missing first. Ends with a status
# other than 0 when anything is found.
#
# clang-tidy looks again only at what has changed, in the file or in a header of ours that it includes,
# since it last had no findings; build/tidy keeps the marks.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# A hook of git is told about the repository by the environment; nothing here wants to know.
unset "${!GIT_@}"
source scripts/setup.sh
readonly build=build/release
readonly marks=build/tidy

case ${1:-} in
  '') fix= ;;
  --fix) fix=yes ;;
  *) fail "usage: scripts/style.sh [--fix]" ;;
esac

say "Looking for clang-format, clang-tidy and shellcheck"
need_test_tools
need_style_tools
install_missing
failed=()

# --- Form.

mapfile -t sources < <(find . -path ./build -prune -o \( -name '*.h' -o -name '*.cpp' \) -print | sort)
if [[ -n $fix ]]; then clang-format -i "${sources[@]}"; fi
if clang-format --dry-run -Werror "${sources[@]}"; then
  say "clang-format has nothing to change in ${#sources[@]} files"
else
  failed+=(clang-format)
fi

# --- Findings, one file a process. What a file is judged by goes into the name of its mark.

tidy() {
  local file=$1 mark
  mark=$marks/$({
    printf '%s\n' "$file" "$tidy_version"
    c++ -std=c++20 -I. -MM -DTEST_DATA= "$file" | tr -d '\\' | tr ' ' '\n' | sed '1d;/^$/d' |
      xargs sha256sum .clang-tidy tests/.clang-tidy
  } | sha256sum | cut -c 1-64)
  if [[ -e $mark ]]; then return; fi
  # What it says of the standard library and of GoogleTest is counted, not shown; the count goes too.
  clang-tidy -quiet ${fix:+-fix} -p "$build" "$file" 2> >(grep -v ' warnings\? .*generated\.$' >&2) ||
    return 1
  : >"$mark"
}
export -f tidy
export fix build marks tidy_version
tidy_version=$(clang-tidy --version)

cmake --preset release -DSEALWRIGHT_TESTS=ON >/dev/null
mkdir -p "$marks"
mapfile -t units < <(sed -n 's/^ *"file": "\(.*\)",\?$/\1/p' "$build/compile_commands.json" |
  sed "s|^$PWD/||" | sort -u)
# The long ones first, so that no processor waits for the last one. Two at once would both mend a
# header that they share.
if stat -c '%s %n' "${units[@]}" | sort -rn | cut -d ' ' -f 2- |
  xargs -d '\n' -n 1 -P "$([[ -n $fix ]] && echo 1 || nproc)" bash -c 'tidy "$1"' tidy; then
  say "clang-tidy has no findings in ${#units[@]} files"
else
  failed+=(clang-tidy)
fi

# --- Directions.

scripts/check_includes.sh || failed+=(includes)

# --- Scripts.

mapfile -t scripts < <(grep -r -l -E '^#!.*bash|shell=bash' .ci bench packaging scripts | sort)
if shellcheck -x -P SCRIPTDIR -S warning "${scripts[@]}"; then
  say "shellcheck has no findings in ${#scripts[@]} scripts"
else
  failed+=(shellcheck)
fi

if ((${#failed[@]} > 0)); then fail "findings of: ${failed[*]}"; fi
