# nebsc.bash - completion of nebsc in bash. "nebsc complete" prints the candidates.

# _nebsc_unquoted TEXT: sets REPLY to the text without the quotes of the shell.
_nebsc_unquoted() {
    local text=$1 quote='' i
    REPLY=
    for ((i = 0; i < ${#text}; i++)); do
        case $quote${text:i:1} in
            \' | \") quote=${text:i:1} ;;
            \'\' | \"\") quote= ;;
            \\ | \"\\) ((i++)); REPLY+=${text:i:1} ;;
            *) REPLY+=${text:i:1} ;;
        esac
    done
}

_nebsc() {
    local IFS=$' \t\n' REPLY
    # bash also splits words at : and =. Join the pieces that no blank separates.
    local line=${COMP_LINE:0:COMP_POINT} words=() piece rest i
    for ((i = 0; i <= COMP_CWORD; i++)); do
        rest=${line#"${line%%[![:blank:]]*}"}
        piece=${COMP_WORDS[i]}
        ((i == COMP_CWORD)) && piece=$rest
        if [[ $rest != "$line" ]] || ((i == 0)); then
            words+=("$piece")
        else
            words[-1]+=$piece
        fi
        line=${rest#"$piece"}
    done
    # The text that readline replaces by a candidate, and the head that it keeps.
    local typed=$piece head
    [[ $piece =~ ^[:=]+$ ]] && typed=
    head=${words[-1]%"$typed"}
    _nebsc_unquoted "$head"
    head=$REPLY

    for i in "${!words[@]}"; do
        _nebsc_unquoted "${words[i]}"
        words[i]=$REPLY
    done
    local program=${words[0]/#\~\//"$HOME/"} answer=() word
    [[ $program == */* ]] || program=nebsc
    mapfile -t answer < <("$program" complete -- "${words[@]:1}" 2>/dev/null)
    COMPREPLY=()
    for word in "${answer[@]:1}"; do
        word=${word%%$'\t'*}
        COMPREPLY+=("${word#"$head"}")
    done

    if [[ ${answer[0]} == files || ${answer[0]} == folders ]]; then
        # Makes readline quote the name and append a slash to a directory.
        compopt -o filenames 2>/dev/null
        local path=${words[-1]}
        [[ $path == --*=* ]] && path=${path#*=}
        if [[ $typed == '~'* ]]; then
            compopt -o default 2>/dev/null
            return
        fi
        # Works with any setting of the shell for patterns.
        while IFS= read -r -d '' word; do
            [[ ${answer[0]} == files || -d $word ]] && COMPREPLY+=("$word")
        done < <(set +f; unset GLOBIGNORE; shopt -s nullglob; shopt -u failglob
                 for word in "$path"*; do printf '%s\0' "$word"; done)
    else
        # A directory that nebsc has completed: more of the path may follow.
        [[ ${#COMPREPLY[@]} == 1 && ${COMPREPLY[0]} == */ ]] && compopt -o nospace 2>/dev/null
        case $typed in
            \'*) ;;
            \"*) COMPREPLY=("${COMPREPLY[@]//\\/\\\\}")
                 COMPREPLY=("${COMPREPLY[@]//\$/\\\$}")
                 COMPREPLY=("${COMPREPLY[@]//\`/\\\`}")
                 COMPREPLY=("${COMPREPLY[@]//\"/\\\"}") ;;
            *) for i in "${!COMPREPLY[@]}"; do
                   printf -v "COMPREPLY[i]" %q "${COMPREPLY[i]}"
               done ;;
        esac
    fi
}

complete -F _nebsc nebsc
