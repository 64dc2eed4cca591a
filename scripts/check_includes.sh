#!/usr/bin/env bash
# Proves two things about the includes of the product: none runs against the arrows between the
# folders, and no unit (a header with its source) can be reached from itself.
set -euo pipefail
cd "${1:-$(dirname "${BASH_SOURCE[0]}")/..}"

# What each folder may include from, besides itself.
declare -A below=(
  [base]=''
  [crypto]='base'
  [util]='base'
  [scheme]='util crypto base'
  [sb20]='scheme util crypto base'
  [sb10]='scheme util crypto base'
  [artefact]='sb20 sb10 scheme util crypto base'
  [front]='sb20 sb10 scheme util crypto base'
  [inspect]='artefact sb20 sb10 scheme util crypto base'
  [seal]='artefact sb20 sb10 scheme util crypto base'
)

# Every include as "from/unit to/unit".
includes() {
  grep -rHoE '^#include "[^"]+"' --include='*.h' --include='*.cpp' "${folders[@]}" |
    sed -E 's/^(.*)\.(h|cpp):#include "(.*)\.h"$/\1 \3/'
}

folders=()
for folder in "${!below[@]}"; do
  if [[ -d $folder ]]; then folders+=("$folder"); fi
done

status=0
edges=$(includes | awk '$1 != $2' | sort -u)
while read -r from to; do
  allowed=" ${from%%/*} ${below[${from%%/*}]} "
  if [[ $allowed != *" ${to%%/*} "* ]]; then
    printf 'against the arrows: %s includes %s\n' "$from" "$to"
    status=1
  fi
done <<<"$edges"

if ! circles=$(tsort <<<"$edges" 2>&1 >/dev/null); then
  printf 'units on a circle of includes:\n%s\n' "$circles"
  status=1
fi
if ((status == 0)); then printf '%s includes between units, all downward, no circle\n' "$(wc -l <<<"$edges")"; fi
exit "$status"
