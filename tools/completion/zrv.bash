# Completion of zrv in bash: source <(zrv completion bash)
_zrv() {
  local program=${COMP_WORDS[0]/#\~/$HOME} line=${COMP_LINE:0:COMP_POINT} words=() blanks word files='' i
  # What stands between blanks is put together again: bash cuts words at = and : too.
  for ((i = 0; i <= COMP_CWORD; ++i)); do
    blanks=${line%%[![:blank:]]*} line=${line#"${line%%[![:blank:]]*}"} word=${COMP_WORDS[i]}
    ((i == COMP_CWORD)) && word=$line
    line=${line#"$word"}
    if [[ $i -eq 0 || $blanks ]]; then words+=("$word"); else words[-1]+=$word; fi
  done
  # Only what follows the last cut is replaced.
  local current=${words[-1]} cut=''
  [[ $COMP_WORDBREAKS == *=* && $current == *=* ]] && cut=${current%"${current##*=}"}
  [[ $COMP_WORDBREAKS == *:* && ${current#"$cut"} == *:* ]] && cut=${current%"${current##*:}"}
  COMPREPLY=()
  while IFS=$'\t' read -r word _; do
    case $word in
      :files) files=yes; compopt -o default ;;
      :folders) compopt -o dirnames ;;
      "$current"*) COMPREPLY+=("${word#"$cut"}") ;;
    esac
  done < <("$program" __complete "${words[@]:1}" 2>/dev/null)
  if [[ $files && ${#COMPREPLY[@]} -gt 0 ]]; then
    compopt -o filenames
    mapfile -t -O ${#COMPREPLY[@]} COMPREPLY < <(compgen -f -- "$current")
  fi
  [[ ${#COMPREPLY[@]} -eq 1 && ${COMPREPLY[0]} == *: ]] && compopt -o nospace
}
complete -F _zrv zrv
