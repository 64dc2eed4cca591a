# shellcheck shell=bash
# Completion for Sealwright_V21, Sealwright_V21_client, Sealwright_inspect and Sealwright_seal.

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
  local words=(--json) before=" ${COMP_WORDS[*]:1:COMP_CWORD-1} "
  if [[ $before == *' --boot '* ]]; then
    words+=(--code)
  elif [[ $before != *' --'[phv]* ]]; then
    words+=(--boot --pem)
    if ((COMP_CWORD == 1)); then words+=(--help --version); fi
  fi
  _sealwright_offer_new "$2" "${words[@]}"
}

_sealwright_seal() {
  local words=(--json --help) i
  if ((COMP_CWORD == 1)); then
    _sealwright_offer "$2" '' root-key stage2-key bl1 bl2 export-key --help --version
    return
  fi
  for ((i = 2; i < COMP_CWORD; i++)); do
    if [[ ${COMP_WORDS[i]} == -- ]]; then
      # A program that signs, and what it is given.
      _sealwright_offer "$2" yes
      if ((i == COMP_CWORD - 1)); then mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -c -- "$2"); fi
      return
    fi
  done
  case ${COMP_WORDS[COMP_CWORD - 1]} in
    --scheme)
      _sealwright_offer "$2" '' 2.1 1.1
      return
      ;;
    --root | --stage2-key | --private-key | --public-key | --signature)
      _sealwright_offer "$2" yes
      return
      ;;
  esac
  case ${COMP_WORDS[1]} in
    root-key | stage2-key) words+=(--scheme --public-key) ;;
    bl1) words+=(--build-info --root --stage2-key) ;;
    bl2) words+=(--stage2-key --private-key) ;;
  esac
  if [[ ${COMP_WORDS[1]} != export-key ]]; then words+=(--padded --prepare --signature --); fi
  _sealwright_offer_new "$2" "${words[@]}"
}

# Files, and those of the words $2... that have not been typed yet.
_sealwright_offer_new() {
  local word new=()
  for word in "${@:2}"; do
    if [[ " ${COMP_WORDS[*]:1:COMP_CWORD-1} " != *" $word "* ]]; then new+=("$word"); fi
  done
  _sealwright_offer "$1" yes "${new[@]}"
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
complete -F _sealwright_seal Sealwright_seal
