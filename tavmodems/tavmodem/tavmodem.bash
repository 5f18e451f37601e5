# bash completion of tavmodem

_tavmodem()
{
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local commands="list info cells signal balance number ussd sms modem-only"
    local word command='' i
    COMPREPLY=()
    case $previous in
    --port)
        if [[ $current == /* ]]; then
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
        else
            local ports
            ports=$(compgen -G '/dev/tty[AU][CS][MB]*')
            mapfile -t COMPREPLY < <(compgen -W "${ports//\/dev\//}" -- "$current")
        fi
        return
        ;;
    --baud)
        mapfile -t COMPREPLY < <(compgen -W "9600 19200 38400 57600 115200 230400 460800 921600" -- "$current")
        return
        ;;
    esac
    for ((i = 1; i < COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        case $word in
        --port | --baud) ((++i)) ;;
        -*) ;;
        *)
            command=$word
            break
            ;;
        esac
    done
    local options="--port --baud --json --help --version"
    [[ $command != sms ]] || options="$options --take"
    if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
    elif [[ -z $command ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$current")
    fi
}
complete -F _tavmodem tavmodem
