// zrv completion: scripts by which shells complete zrv's command line. A script knows nothing of the commands: it asks
// the zrv that stands on the line.
#include <CLI/CLI.hpp>
#include <cstdio>

#include "commands.h"
#include "options.h"

namespace zrvtool {
namespace {

struct Shell {
  const char* name;
  const char* script;
};

constexpr Shell kShells[] = {
    {"bash", R"(# Completion of zrv in bash: source <(zrv completion bash)
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
)"},
    {"zsh", R"(#compdef zrv
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
)"},
    {"fish", R"(# Completion of zrv in fish: zrv completion fish | source
function __zrv_complete
    set -l words (commandline -opc)
    set -l program (string replace -r '^~' $HOME -- $words[1])
    set -e words[1]
    set -l current (commandline -ct)
    set -l cut (string match -r '^.*[=:]' -- $current)
    for line in ($program __complete $words "$current" 2>/dev/null)
        switch $line
            case :files
                __fish_complete_path (string replace -r '^.*[=:]' '' -- $current) | string replace -r '^' "$cut"
            case :folders
                __fish_complete_directories (string replace -r '^.*[=:]' '' -- $current) | string replace -r '^' "$cut"
            case '*'
                echo $line
        end
    end
end
complete -c zrv -f -k -a '(__zrv_complete)'
)"},
};

constexpr char kShellNames[] = "bash|zsh|fish";

void PrintScript(const std::string& shell) {
  for (const Shell& row : kShells)
    if (shell == row.name) std::fputs(row.script, stdout);
}

}  // namespace

void AddCompletionCommand(CLI::App& app) {
  auto shell = std::make_shared<std::string>();
  CLI::App* command = AddCommand(app, "completion", "Print a script that makes a shell complete zrv's command line",
                                 {"zrv completion bash >~/.local/share/bash-completion/completions/zrv",
                                  "source <(zrv completion zsh)", "zrv completion fish | source"},
                                 "An installed zrv brings the scripts along; shells find them by themselves.");
  command->add_option("shell", *shell, "which one")
      ->required()
      ->type_name(kShellNames)
      ->check(Valid({.name = "", .type = OptionType::Choice, .initial = "", .help = "", .choices = kShellNames}));
  command->callback([shell] { PrintScript(*shell); });
}

}  // namespace zrvtool
