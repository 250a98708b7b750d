# Completion for the commands of TarnexComm. Their own help says what there is to complete.

# The long options in the help of a command, which has those of others in its examples.
_tarnex_options() {
    "$@" --help 2>/dev/null | sed -nE 's/^  (-[a-z],)?(--[a-z][a-z0-9-]*).*/\2/p' | sort -u
}

# The first words of the lines below a heading in the help of a command.
_tarnex_words() {
    local heading=$1
    shift
    "$@" --help 2>/dev/null | sed -n "/^$heading/,/^\$/s/^  \([a-z][a-z0-9-]*\) .*/\1/p"
}

# The sample settings, which are there for everybody to read.
_tarnex_sample() {
    local program
    program=$(type -P "$1") && echo "${program%/*}/../share/tarnexcomm/Tarnex.ini.sample"
}

# The plain names of all settings.
_tarnex_settings() {
    "$1" --settings-file "$(_tarnex_sample "$1")" settings list 2>/dev/null |
        sed -n 's/^  \([a-z][a-z0-9-]*\) .*/\1/p'
}

# The stable names of the serial ports that are there.
_tarnex_ports() {
    compgen -G "/dev/serial/by-id/*"
}

# The values of one setting, where they are words, files or devices.
_tarnex_values() {
    local allowed word='[A-Za-z0-9+-]+'
    allowed=$("$1" --settings-file "$(_tarnex_sample "$1")" settings list --long "$2" 2>/dev/null |
        sed -n 's/^  allowed  *//p;T;q')
    if [[ $allowed == "an absolute path" ]]; then
        _filedir
        if [[ $2 == com*-device ]]; then
            mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -W "$(_tarnex_ports)" -- "$cur")
        fi
    elif [[ $allowed =~ ^$word(, $word)*\ or\ $word$ ]]; then
        _tarnex_offer "${allowed//@(, | or )/ }"
    fi
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
    --settings-file | --status-file | --output | --html | --schema | --log-database | --mail-password-file)
        _filedir
        return
        ;;
    --port)
        _tarnex_offer "search $(_tarnex_ports) $(echo COM{1..20})"
        return
        ;;
    --communication-alarm | --power-alarm | --send-again)
        _tarnex_offer "yes no"
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
        if [[ $prev == "${command[-1]}" ]]; then
            _tarnex_offer "$(_tarnex_settings "$1")"
        elif [[ ${command[-1]} == set && ${words[cword - 2]} == set ]]; then
            _tarnex_values "$1" "$prev"
        fi
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
