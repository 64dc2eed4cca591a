#!/usr/bin/env bash
# Usage: scripts/style.sh [--fix]
#
# Checks what a reader would otherwise have to: the form of the sources (clang-format), the findings of
# clang-tidy in product and tests, the directions of the includes, and the scripts (shellcheck). With
# --fix it mends what the two clang tools can mend. Installs what is missing first. Ends with a status
# other than 0 when anything is found.
#
# clang-tidy looks again only at the folders that have changed, or a header of ours that they include,
# since it last had no findings there; build/tidy keeps the marks.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# A hook of git is told about the repository by the environment; nothing here wants to know.
unset "${!GIT_@}"
source scripts/setup.sh
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

# --- Findings. The sources of a wing or of a test program are joined to one unit, since the standard library
# and GoogleTest take most of the time of each. It is judged by the rules that hold where they lie, of which
# copies stand beside it. The analyzer follows only what a source itself defines, so it has them one by one.
# What each is judged by goes into the name of its mark.

tidy() {
  local source=$1 mark checks='-*,clang-analyzer-*'
  if [[ $source == "$PWD/$marks"/* ]]; then checks='-clang-analyzer-*'; fi
  mark=$marks/$({
    printf '%s\n' "${source#"$PWD"}" "$tidy_version"
    c++ -std=c++20 -I. -MM -DTEST_DATA= "$source" | tr -d '\\' | tr ' ' '\n' | sed '1d;/^$/d' |
      xargs sha256sum .clang-tidy tests/.clang-tidy
  } | sha256sum | cut -c 1-64)
  if [[ -e $mark ]]; then return; fi
  # What it says of the standard library and of GoogleTest is counted, not shown; the count goes too.
  clang-tidy -quiet ${fix:+-fix} -p "$marks" -checks="$checks" "$source" \
    2> >(grep -v ' warnings\? .*generated\.$' >&2) || return 1
  : >"$mark"
}
export -f tidy
export fix marks tidy_version
tidy_version=$(clang-tidy --version)

mkdir -p "$marks"
rm -rf "${marks:?}"/*/
cmake --preset release -B "$marks/database" -DSEALWRIGHT_TESTS=ON -DSEALWRIGHT_JOIN_TESTS=OFF >/dev/null
# The commands of the units, each with the sources that it joins. Names that shadow others are the
# compiler's to find: joined sources have more of them.
jq --arg root "$PWD" --arg marks "$PWD/$marks" '
  map(.command |= gsub(" -Werror| -Wshadow"; "")
    | .group = (.file | ltrimstr($root) | sub("^/tests/.*"; "/tests/") | sub("[^/]*$"; "")) +
               (.command | capture("CMakeFiles/(?<target>[^/]+)\\.dir/").target))
  | group_by(.group)
  | map({directory: .[0].directory, file: ($marks + .[0].group + ".cpp"),
         command: (.[0].command | sub(" -c .*"; " -c ")), sources: map(.file)})' \
  "$marks/database/compile_commands.json" >"$marks/units.json"
jq 'map({directory, command, file: (.file, .sources[])} | .command += .file)' \
  "$marks/units.json" >"$marks/compile_commands.json"
jq -r '.[] | .file as $unit | .sources[] | $unit + " " + .' "$marks/units.json" >"$marks/units"
while read -r unit source; do
  mkdir -p "${unit%/*}"
  printf '#include "%s"\n' "$source" >>"$unit"
done <"$marks/units"
cp .clang-tidy "$marks/"
cp tests/.clang-tidy "$marks/tests/"
# The units, which take longest, come first; tests are judged in their units alone. Two at once would both
# mend a header that they share.
mapfile -t to_judge < <(
  cut -d ' ' -f 1 "$marks/units" | sort -u -r
  cut -d ' ' -f 2 "$marks/units" | grep -v -F "$PWD/tests/"
)
if printf '%s\n' "${to_judge[@]}" |
  xargs -d '\n' -n 1 -P "$([[ -n $fix ]] && echo 1 || nproc)" bash -c 'tidy "$1"' tidy; then
  say "clang-tidy has no findings in $(wc -l <"$marks/units") sources"
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
