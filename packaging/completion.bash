# Completion for the commands of TarnexComm. Their own help says what there is to complete.

# The long options in the help of a command.
_tarnex_options() {
    "$@" --help 2>/dev/null | grep -oE -e '--[a-z][a-z0-9-]*' | sort -u
}

# The first words of the lines below a heading in the help of a command.
_tarnex_words() {
    local heading=$1
    shift
    "$@" --help 2>/dev/null | sed -n "/^$heading/,/^\$/s/^  \([a-z][a-z0-9-]*\) .*/\1/p"
}

# The plain names of all settings; the sample is there for everybody to read.
_tarnex_settings() {
    local program
    program=$(type -P "$1") || return
    "$program" --settings-file "${program%/*}/../share/tarnexcomm/Tarnex.ini.sample" settings list \
        2>/dev/null | sed -n 's/^  \([a-z][a-z0-9-]*\) .*/\1/p'
}

_tarnex_offer() {
    mapfile -t COMPREPLY < <(compgen -W "$1" -- "$cur")
}

_tarnexctl() {
    local cur prev words cword
    _init_completion || return
    local command=("$1") word
    for word in "${words[@]:1:cword-1}"; do
        if _tarnex_words Subcommands: "${command[@]}" | grep -qxF -e "$word"; then
            command+=("$word")
        fi
    done
    case $prev in
    --settings-file | --status-file | --output | --schema | --log-database | --mail-password-file)
        _filedir
        return
        ;;
    esac
    if [[ $cur == -* ]]; then
        _tarnex_offer "$({ _tarnex_options "$1" && _tarnex_options "${command[@]}"; } | sort -u)"
        return
    fi
    case "${command[*]:1}" in
    "settings list") _tarnex_offer "$(_tarnex_settings "$1")" ;;
    "settings get" | "settings set" | "settings unset")
        [[ $prev == "${command[-1]}" ]] && _tarnex_offer "$(_tarnex_settings "$1")"
        ;;
    "log create" | "log tail") _filedir ;;
    *) _tarnex_offer "$(_tarnex_words Subcommands: "${command[@]}")" ;;
    esac
}

_tarnex_monitor() {
    local cur prev words cword
    _init_completion || return
    case $prev in
    --link) _tarnex_offer "0 1 2 3 4" ;;
    --encoding) _tarnex_offer "GBK UTF-8" ;;
    --sms | --mail) _tarnex_offer "yes no" ;;
    --service | --state | --action)
        local word=${prev#--}
        _tarnex_offer "$(_tarnex_words "${word^^}," "$1")"
        ;;
    *) _tarnex_offer "listen notify raw $(_tarnex_options "$1")" ;;
    esac
}

# The other programs: options, some with a file or one of a few words.
_tarnex_program() {
    local cur prev words cword
    _init_completion || return
    case $prev in
    --link | --script) _filedir ;;
    --file) _filedir "@(hex|HEX)" ;;
    --port) [[ ${1##*/} == tarnex-flasher ]] && _tarnex_offer "$(echo COM{1..20})" ;;
    --encoding) _tarnex_offer "GBK UTF-8" ;;
    --refuse) _tarnex_offer "greeting helo auth user password mail rcpt data content quit" ;;
    *) _tarnex_offer "$(_tarnex_options "$1")" ;;
    esac
}

complete -F _tarnexctl tarnexctl
complete -F _tarnex_monitor tarnex-monitor
complete -F _tarnex_program tarnex-sim tarnex-mail-sink tarnex-flasher tarnex-console
