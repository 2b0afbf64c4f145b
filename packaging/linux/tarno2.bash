# Completion of bash for the programs of Tarno2. What can be typed is asked of the program itself, by --list-options:
# lines of command, name, value and a description, between tabs.

_tarno2() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    local list command name value i chosen='' words='' known='' files=''
    list=$(COMP_WORDBREAKS='' "$1" --list-options 2>/dev/null | tr '\t' '\037') || return
    for ((i = 1; i < COMP_CWORD; ++i)); do
        grep -q $'^\037'"${COMP_WORDS[i]}"$'\037COMMAND\037' <<<"$list" && chosen=${COMP_WORDS[i]} && break
    done 2>/dev/null
    while IFS=$'\037' read -r command name value _; do
        [ "$command" = "$chosen" ] || continue
        if [ "$name" = "$before" ] && [ -n "$value" ] && [ "$value" != COMMAND ]; then
            known=$value
            break
        fi
        case $name in
        [-/]*) words+=" $name" ;;
        *[a-z]*) [ "$value" = COMMAND ] && words+=" $name" ;;
        esac
        # An argument: one of some words, else a file.
        case $name:$value in
        [-/]* | *:COMMAND) ;;
        *:{*) value=${value#?} && words+=" ${value%?}" && words=${words//,/ } ;;
        *) files=1 ;;
        esac
    done <<<"$list"
    if [[ $known = {* ]]; then
        known=${known:1:${#known}-2}
        mapfile -t COMPREPLY < <(compgen -W "${known//,/ }" -- "$word")
    elif [ -n "$known" ]; then
        [[ ! $known =~ ^(FILE|TEXT) ]] || _tarno2_files "$word"
    elif [[ $word = [-/]* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
        [[ $word = -* ]] || _tarno2_files "$word" add
    else
        [ -z "$files" ] || _tarno2_files "$word"
        mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -W "$words" -- "$word")
    fi
}

_tarno2_files() {
    compopt -o filenames 2>/dev/null
    mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -f -- "$1")
}

complete -F _tarno2 Tarno2 tarno2-console tarno2-drivers tarno2-export tarno2-recover tarno2-verify tarno2-thumbnail
