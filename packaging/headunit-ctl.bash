# Completion of headunit-ctl for bash. Names are those of the engine that it would ask; without one, pages and programs are those of
# every unit.

# The texts that the records of an answer have for a key.
_headunit_ctl_ask() { # key option... command
    local key=$1
    shift
    headunit-ctl --json "$@" 2>/dev/null | sed -n "s/^    \"$key\": \"\(.*\)\",\{0,1\}$/\1/p"
}

# Names, and what may be said in their place: without what all begin with, and in small letters.
_headunit_ctl_both() { # beginning name...
    local beginning=$1 name
    shift
    for name; do
        name=${name#"$beginning"}
        echo "$beginning$name ${name,,}"
    done
}

_headunit_ctl_pages() {
    local names
    names=$(_headunit_ctl_ask page "$@" pages)
    # shellcheck disable=SC2086 # a name a word
    _headunit_ctl_both mb ${names:-mbMainMenu mbSetup mbBTPhone mbBTAudio mbFM mbAM mbWB mbUSBAudio mbUSBVideo mbiPodAudio mbiPodVideo
        mbReariPod mbiPodPandora mbSirius mbAuxin1 mbAuxin2 mbRearAV1 mbRearAV2 mbStandby mbAVOff mbEQ mbAntitheft mbCamera}
}

_headunit_ctl_programs() {
    local names
    names=$(_headunit_ctl_ask program "$@" programs)
    # shellcheck disable=SC2086
    _headunit_ctl_both App ${names:-AppMainMenu AppSetup AppBluetooth AppRadio AppUSB AppiPod AppPandora AppSirius AppAuxIn AppStandby
        AppEQ AppAntitheft AppCamera}
}

_headunit_ctl_files() {
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$1")
}

_headunit_ctl() {
    local current=${COMP_WORDS[COMP_CWORD]} words=() options=() choices= i
    COMPREPLY=()
    # What stands before: the words of the command, and the options that say which engine is asked.
    for ((i = 1; i < COMP_CWORD; ++i)); do
        case ${COMP_WORDS[i]} in
            --bus | --config)
                options+=("${COMP_WORDS[i]}" "${COMP_WORDS[i + 1]}")
                ((++i))
                # Bash cuts an address at its colons and equals signs.
                while [[ ${COMP_WORDS[i + 1]} == [=:] ]] && ((i + 1 < COMP_CWORD)); do
                    options[-1]+=${COMP_WORDS[i + 1]}${COMP_WORDS[i + 2]}
                    ((i += 2))
                done
                if ((i >= COMP_CWORD)); then
                    [[ ${options[-2]} == --config ]] && _headunit_ctl_files "$current"
                    return
                fi
                ;;
            -*) ;;
            *) words+=("${COMP_WORDS[i]}") ;;
        esac
    done
    case "${words[*]}" in
        "") choices="state pages programs requests link remote dsp settings groups queues counters latency why log trace watch" ;;
        settings) choices=$(_headunit_ctl_ask name "${options[@]}" settings) ;;
        counters) choices=--all ;;
        why) choices="page source silent request not" ;;
        "why page" | "why source") choices=$(_headunit_ctl_pages "${options[@]}") ;;
        "why not") choices=running ;;
        "why not running") choices=$(_headunit_ctl_programs "${options[@]}") ;;
        log) choices="error info debug verbose default" ;;
        trace) _headunit_ctl_files "$current"; return ;;
    esac
    [[ $current == -* ]] && choices+=" --bus --config --json --help --version"
    mapfile -t COMPREPLY < <(compgen -W "$choices" -- "$current")
}

complete -F _headunit_ctl headunit-ctl
