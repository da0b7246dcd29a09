#compdef zrv
# Completion of zrv in zsh: source <(zrv completion zsh)
_zrv() {
  local -a plain open
  local line word help files=
  for line in "${(@f)$("${words[1]/#\~/$HOME}" __complete "${(@Q)words[2,CURRENT-1]}" "${(Q)PREFIX}" 2>/dev/null)}"; do
    word=${line%%$'\t'*} help=${line#*$'\t'}
    case $word in
      '') ;;
      :files) files='_files' ;;
      :folders) files='_files -/' ;;
      *:) open+=("$word") ;;
      *) plain+=("${word//:/\\:}:$help") ;;
    esac
  done
  (( $#plain )) && _describe zrv plain
  (( $#open )) && compadd -S '' -a open
  [[ $files ]] && { compset -P '*[=:]'; ${(z)files} }
}
if [[ $funcstack[1] == _zrv ]]; then _zrv "$@"; else compdef _zrv zrv; fi
