# shellcheck shell=bash
# Completion for Sealwright_V21, Sealwright_V21_client and Sealwright_inspect.

# What may stand at the place that is being typed: the scheme first, a command word in its last place,
# and files before it.
_sealwright_v21() {
  local words=() files=yes previous=${COMP_WORDS[COMP_CWORD - 1]}
  case $COMP_CWORD in
    1) words=(-v2.1 -v1.1) files= ;;
    2)
      words=(-help -v -version)
      if [[ $1 != *_client ]]; then words+=(-KEYGEN); fi
      ;;
    3) words=(-STAGE2_KEYGEN) ;;
    4)
      words=(-STAGE2_VERIFY)
      if [[ $1 != *_client ]]; then words+=(-STAGE1 -VERIFY); fi
      ;;
    5)
      words=(-STAGE2) files=
      if [[ $previous == -STAGE1 && ${COMP_WORDS[1]} != -[vV]2.1 || $1 == *_client && $previous == -* ]]; then
        words=()
      elif [[ $previous == -STAGE1 ]]; then
        words=(-P)
      fi
      ;;
    *) files= ;;
  esac
  # Nothing follows a command word, but -P follows -STAGE1.
  if ((COMP_CWORD > 2)) && [[ $previous == -* && $COMP_CWORD$previous != 5-STAGE1 ]]; then return; fi
  _sealwright_offer "$2" "$files" "${words[@]}"
}

_sealwright_inspect() {
  local words=(--json)
  if [[ " ${COMP_WORDS[*]:1:COMP_CWORD-1} " != *' --'[bphv]* ]]; then
    words+=(--boot --pem)
    if ((COMP_CWORD == 1)); then words+=(--help --version); fi
  fi
  _sealwright_offer "$2" yes "${words[@]}"
}

# Words and, where files may stand and no word is being typed, files that start with $1.
_sealwright_offer() {
  mapfile -t COMPREPLY < <(compgen -W "${*:3}" -- "$1")
  if [[ -z $2 || $1 == -* ]]; then return; fi
  compopt -o filenames 2>/dev/null
  mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -f -- "$1")
}

complete -F _sealwright_v21 Sealwright_V21 Sealwright_V21_client
complete -F _sealwright_inspect Sealwright_inspect
