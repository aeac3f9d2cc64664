#!/usr/bin/env bash
# A private sound server with a virtual microphone and a virtual loudspeaker, for machines without a sound card: the
# demonstration and the end-to-end tests speak and listen through it. Any number may run side by side, one a folder.
#
# The microphone hears silence in real time until `speak`, then SPEECH.wav once from its first sample. What the
# loudspeaker is given is kept from `start` on. Both run at the rate of a voice note, 40000 samples a second, mono.
#
# DIR/env is to be sourced by whoever wants to be heard: it points ALSA's "default" at the server by configuration
# alone and names the device listing. DIR/pids holds the processes: name, id and time of start.
set -euo pipefail

usage() {
    cat <<'TEXT'
usage: sound-server.sh start DIR SPEECH.wav [--owner PID]   with --owner it stops by itself when PID has gone
       sound-server.sh speak DIR         say SPEECH now, from its first sample
       sound-server.sh heard DIR OUT.wav what the loudspeaker has been given since `start`
       sound-server.sh stop DIR
SOUNDCHECK names the soundcheck program (default: the one of build/release), SOUND_SERVER the kind of server,
pulseaudio (default) or pipewire.
TEXT
}

die() {
    echo "sound-server.sh: $*" >&2
    exit 1
}

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
soundcheck=${SOUNDCHECK:-$root/build/release/bin/soundcheck}
kind=${SOUND_SERVER:-pulseaudio}
rate=40000
# How much sound is under way between a program and the server, in milliseconds. The ring that ALSA's server plugin
# grants is five milliseconds long, which a busy machine cannot keep filled: with 20 ms there are gaps under load, with
# 60 none were seen. Capture is not delayed by it.
latency=${SOUND_LATENCY_MSEC:-200}

# The start time tells a process from a later one with the same id. One that has ended has none, although it may stay
# in the list until its parent looks at it.
started_at() { # pid
    local state
    state=$(sed 's/.*) //' "/proc/$1/stat" 2>/dev/null) || return 0
    [[ ${state:0:1} == [ZX] ]] || cut -d' ' -f20 <<<"$state"
}

remember() { # name pid
    echo "$1 $2 $(started_at "$2")" >>"$dir/pids"
}

pid_of() { # name: the id, if that very process still lives
    local name pid start
    [[ -f $dir/pids ]] || return 1
    while read -r name pid start; do
        [[ $name == "$1" && -n $start && $(started_at "$pid") == "$start" ]] && echo "$pid" && return
    done <"$dir/pids"
    return 1
}

wait_for() { # what command...: up to 20 s
    local what=$1 deadline=$((SECONDS + 20))
    shift
    until "$@" >/dev/null 2>&1; do
        ((SECONDS < deadline)) || { end_all && die "$what did not come up; see $dir/*.log"; }
        sleep 0.02
    done
}

end_all() {
    local name pid
    [[ -f $dir/pids ]] || return 0
    for name in microphone door manager server bus loudspeaker watch; do
        pid=$(pid_of "$name") && [[ $pid != $$ ]] || continue
        kill "$pid" 2>/dev/null || continue
        for _ in {1..150}; do
            pid_of "$name" >/dev/null || break
            sleep 0.02
        done
        ! pid_of "$name" >/dev/null || kill -KILL "$pid" 2>/dev/null || true
    done
    rm -f "$dir"/{pids,native,bus,microphone.fifo,loudspeaker.fifo}
}

write_configuration() {
    cat >"$dir/asound.conf" <<TEXT
pcm.!default { type pulse server "unix:$socket" }
ctl.!default { type pulse server "unix:$socket" }
TEXT
    echo "00-00: virtual : virtual : playback 1 : capture 1" >"$dir/pcm"
    cat >"$dir/env" <<TEXT
export ALSA_CONFIG_PATH='$dir/asound.conf'
export PULSE_SERVER='unix:$socket'
export PULSE_CLIENTCONFIG=/dev/null
export PULSE_RUNTIME_PATH='$dir/runtime'
export PULSE_LATENCY_MSEC=$latency
export PHONOMARK_PCM_LIST='$dir/pcm'
TEXT
}

# Programs of the server see nothing of the person's own session.
alone=(env -i "PATH=$PATH" LC_ALL=C)

default_devices_stand() {
    local info
    info=$("${alone[@]}" PULSE_CLIENTCONFIG=/dev/null PULSE_SERVER="unix:$socket" pactl info)
    [[ $info == *"Default Sink: loudspeaker"* && $info == *"Default Source: microphone"* ]]
}

launch() { # name log command...
    local name=$1 log=$2
    shift 2
    "${alone[@]}" "$@" </dev/null >"$dir/$log" 2>&1 &
    remember "$name" $!
}

start_pulseaudio() {
    cat >"$dir/daemon.conf" <<TEXT
daemonize = no
use-pid-file = no
exit-idle-time = -1
enable-shm = no
realtime-scheduling = no
high-priority = no
default-sample-format = s16le
default-sample-rate = $rate
alternate-sample-rate = $rate
default-sample-channels = 1
TEXT
    cat >"$dir/default.pa" <<TEXT
.fail
load-module module-native-protocol-unix auth-anonymous=1 socket=$socket
load-module module-pipe-source source_name=microphone file=$dir/microphone.fifo format=s16le rate=$rate channels=1
load-module module-pipe-sink sink_name=loudspeaker file=$dir/loudspeaker.fifo format=s16le rate=$rate channels=1 use_system_clock_for_timing=yes
set-default-source microphone
set-default-sink loudspeaker
TEXT
    launch server server.log PULSE_CONFIG="$dir/daemon.conf" PULSE_STATE_PATH="$dir/home" \
        DBUS_SESSION_BUS_ADDRESS="unix:path=$dir/none" DBUS_SYSTEM_BUS_ADDRESS="unix:path=$dir/none" \
        pulseaudio -n -F "$dir/default.pa" --log-target=stderr
}

# PipeWire with its PulseAudio door: its own door to ALSA cannot be installed beside PulseAudio. The session manager
# links streams to devices and needs a session bus. A turn of the graph that does not end in time loses its samples: at
# its default of 1024 none were seen lost beside eight busy loops, at 256 a turn in thirty seconds beside three.
start_pipewire() {
    mkdir -p "$dir/config/pipewire/pipewire.conf.d" "$dir/config/wireplumber/main.lua.d"
    cat >"$dir/config/pipewire/pipewire.conf.d/sound.conf" <<TEXT
context.properties = {
    default.clock.rate = $rate
    default.clock.allowed-rates = [ $rate ]
    default.clock.quantum = 1024
    default.clock.min-quantum = 1024
    default.clock.max-quantum = 1024
}
context.modules = [
$(for end in source:microphone sink:loudspeaker; do
    echo "    { name = libpipewire-module-pipe-tunnel"
    echo "      args = { tunnel.mode = ${end%:*}  pipe.filename = \"$dir/${end#*:}.fifo\""
    echo "               audio.format = S16LE  audio.rate = $rate  audio.channels = 1  audio.position = [ MONO ]"
    echo "               stream.props = { node.name = ${end#*:} } } }"
done)
]
TEXT
    printf '%s_monitor.enabled = false\n' alsa v4l2 libcamera >"$dir/config/wireplumber/main.lua.d/51-virtual.lua"
    local bus=unix:path=$dir/bus
    alone+=("XDG_CONFIG_HOME=$dir/config" "XDG_STATE_HOME=$dir/home" "PIPEWIRE_RUNTIME_DIR=$dir/runtime"
        "DBUS_SESSION_BUS_ADDRESS=$bus" "DBUS_SYSTEM_BUS_ADDRESS=$bus")
    launch bus bus.log dbus-daemon --session --nofork --nopidfile "--address=$bus"
    wait_for "the session bus" test -S "$dir/bus"
    launch server server.log pipewire
    wait_for "the sound server" test -S "$dir/runtime/pipewire-0"
    launch manager manager.log wireplumber
    launch door door.log pipewire-pulse
}

start() {
    local speech=$1
    [[ -x $soundcheck ]] || die "$soundcheck is missing: build the target soundcheck, or set SOUNDCHECK"
    [[ -r $speech ]] || die "$speech cannot be read"
    ((${#dir} < 80)) || die "$dir is too long a name for a socket to be in it"
    [[ $dir != *[\'\"\ ]* ]] || die "$dir has a quote or a space in its name"
    end_all
    mkdir -p "$dir/home" "$dir/runtime"
    chmod 700 "$dir/runtime"
    : >"$dir/pids"
    alone+=("HOME=$dir/home" "XDG_RUNTIME_DIR=$dir/runtime" "PULSE_RUNTIME_PATH=$dir/runtime/pulse")
    local pace=()
    case $kind in
    pulseaudio) socket=$dir/native && start_pulseaudio ;;
    pipewire) socket=$dir/runtime/pulse/native && pace=(--pulled) && start_pipewire ;;
    *) die "there is no sound server of the kind $kind" ;;
    esac
    wait_for "the sound server" default_devices_stand
    write_configuration
    cat "$dir/loudspeaker.fifo" </dev/null >"$dir/heard.raw" 2>"$dir/loudspeaker.log" &
    remember loudspeaker $!
    "$soundcheck" microphone "$dir/microphone.fifo" "$speech" "${pace[@]}" </dev/null >"$dir/microphone.log" 2>&1 &
    remember microphone $!
    wait_for "the microphone" grep -q ready "$dir/microphone.log"
}

watch() { # pid
    (
        tail --pid="$1" -f /dev/null &
        trap 'kill $!; exit' TERM
        wait $!
        exec "$root/scripts/sound-server.sh" stop "$dir"
    ) </dev/null >/dev/null 2>&1 &
    remember watch $!
}

[[ $# -ge 2 ]] || { usage >&2 && exit 1; }
command=$1
mkdir -p "$2"
dir=$(cd "$2" && pwd)
shift 2
case $command in
start)
    [[ $# -eq 1 || ($# -eq 3 && $2 == --owner) ]] || { usage >&2 && exit 1; }
    start "$1"
    [[ $# -eq 1 ]] || watch "$3"
    ;;
speak) pid=$(pid_of microphone) || die "no microphone runs in $dir"
    kill -USR1 "$pid" ;;
heard)
    [[ $# -eq 1 ]] || { usage >&2 && exit 1; }
    [[ -f $dir/heard.raw ]] || die "nothing was ever heard in $dir"
    pid=$(pid_of loudspeaker) && kill "$pid"
    "$soundcheck" wrap "$dir/heard.raw" "$1" "$rate"
    ;;
stop) end_all ;;
*) usage >&2 && exit 1 ;;
esac
