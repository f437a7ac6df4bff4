# bash completion for cfgq: the tool itself names the candidates (cfgq __complete).
_cfgq() {
  local cur=${COMP_WORDS[COMP_CWORD]} word out status
  local -a words=()
  # Words as the tool will see them: a leading quote or a backslash before a blank dropped.
  for word in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
    word=${word#[\"\']}
    word=${word%[\"\']}
    words+=("${word//\\ / }")
  done
  out=$("${COMP_WORDS[0]}" __complete "${words[@]}" 2>/dev/null)
  status=$?
  if [[ $status -eq 1 ]]; then
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$cur")
    return
  fi
  COMPREPLY=()
  [[ $status -eq 0 && -n $out ]] || return
  local candidate
  while IFS= read -r candidate; do
    # Names with blanks ("Change Manager Window") go back to the line quoted.
    if [[ $cur == [\"\']* ]]; then
      COMPREPLY+=("$candidate")
    else
      COMPREPLY+=("$(printf '%q' "$candidate")")
    fi
  done <<<"$out"
}
complete -F _cfgq cfgq
