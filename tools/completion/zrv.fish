# Completion of zrv in fish: zrv completion fish | source
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
