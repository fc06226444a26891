#compdef nebsc
# nebsc.zsh - completion of nebsc in zsh. "nebsc complete" prints the candidates.

_nebsc() {
    local program=${(Q)words[1]/#\~\//$HOME/}
    [[ $program == */* ]] || program=nebsc
    local -a answer described folders
    answer=("${(@f)$("$program" complete -- "${(@Q)words[2,CURRENT-1]}" "${(Q)PREFIX}" 2>/dev/null)}")
    local line name
    for line in "${(@)answer[2,-1]}"; do
        name=${line%%$'\t'*}
        if [[ $name == */ ]]; then
            folders+=("${name//:/\\:}")
        elif [[ $line == *$'\t'* ]]; then
            described+=("${name//:/\\:}:${line#*$'\t'}")
        else
            described+=("${name//:/\\:}")
        fi
    done
    local found=1
    (($#described)) && _describe -V nebsc described && found=0
    # No blank after a directory: more of the path may follow.
    (($#folders)) && _describe -V nebsc folders -S '' && found=0
    if [[ $answer[1] == files || $answer[1] == folders ]]; then
        [[ $PREFIX == --*=* ]] && compset -P '--*='
        if [[ $answer[1] == files ]]; then
            _files && found=0
        else
            _files -/ && found=0
        fi
    fi
    return found
}

# compinit loads this file as the body of the function; if sourced, the file defines the function.
if [[ $funcstack[1] == _nebsc ]]; then
    _nebsc "$@"
else
    compdef _nebsc nebsc
fi
