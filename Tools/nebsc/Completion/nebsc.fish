# nebsc.fish - completion of nebsc in fish. "nebsc complete" prints the candidates.

function __nebsc_complete
    set -l words (commandline -opc)
    set -l program $words[1]
    string match -q '*/*' -- "$program"; or set program nebsc
    set -e words[1]
    set -l typed (commandline -ct)
    set -l word (string unescape -- "$typed"; or printf '%s\n' "$typed")
    set -l answer ($program complete -- $words "$word" 2>/dev/null)
    switch "$answer[1]"
        case files folders
            # fish handles quotes and tildes itself when it completes an unknown command.
            set -l head (string match -r -- '^--[^=]*=' "$typed")
            set -l path (string replace -r -- '^--[^=]*=' '' "$typed")
            for line in (complete -C "__nebsc_no_such_command -- $path")
                if test "$answer[1]" = files; or string match -q -- '*/' "$line"
                    printf '%s%s\n' "$head" "$line"
                end
            end
    end
    test (count $answer) -gt 1; and printf '%s\n' $answer[2..-1]
end

complete -c nebsc -f -a '(__nebsc_complete)'
