#!/usr/bin/env bash
# The whole path with no screen and no sound card: opens a floor plan, places a note, holds the button while a
# synthetic voice speaks into a virtual microphone, saves, and then hears the note again from both saved files, each
# opened afresh. Leaves plan.dxf, plan.merix, before.png, note.png, spoken.wav, heard.wav and report.json in OUT.
#
# usage: demo.sh BUILD OUT
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$(cd "$1" && pwd)
mkdir -p "$2"
out=$(cd "$2" && pwd)
merix=$build/bin/merix
soundcheck=$build/bin/soundcheck

# Where the note stands in the plan, the part of the plan that is looked at, and a spot on the note's marker, up and to
# the right of the point. The marker is 32 pixels wide at any zoom, so the spot lies on it as long as a pixel shows 10
# to 18 millimetres: in this part of the plan, as long as the view is 530 to 950 pixels high.
note_at=24300,7700
look_at=(ZOOM Window 16500,2500 30500,12000)
spot="24550 7950"
least_likeness=0.9

work=$(mktemp -d /tmp/phonomark-demo.XXXXXX)
sound=
speaker=
cleanup() {
    [[ -z $speaker ]] || kill "$speaker" 2>/dev/null || true
    [[ -z $sound ]] || "$root/scripts/sound-server.sh" stop "$sound" || true
    rm -rf "$work"
}
trap cleanup EXIT
trap 'exit 1' INT TERM
fail() {
    printf 'The demonstration failed: %s\n' "$*" >&2
    exit 1
}

# Nothing of the person's own settings is read or changed.
export SOUNDCHECK=$soundcheck
export HOME=$work/home XDG_CONFIG_HOME=$work/home/config XDG_DATA_HOME=$work/home/data
export XDG_CACHE_HOME=$work/home/cache XDG_STATE_HOME=$work/home/state XDG_RUNTIME_DIR=$work/run
mkdir -p "$HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
unset DISPLAY WAYLAND_DISPLAY

steps=()
step_start=
begin() {
    printf '%s\n' "$1"
    step_start=$EPOCHREALTIME
}
end() { # name in the report
    steps+=("$(awk -v n="$1" -v a="$step_start" -v b="$EPOCHREALTIME" 'BEGIN { printf "\"%s\": %.3f", n, b - a }')")
}

start_sound() { # name
    sound=$work/$1
    "$root/scripts/sound-server.sh" start "$sound" "$out/spoken.wav" --owner $$
    # shellcheck disable=SC1091
    source "$sound/env"
    export PHONOMARK_AUDIO_LOG=$work/$1.log
}
stop_sound() {
    "$root/scripts/sound-server.sh" stop "$sound"
    sound=
}

run_merix() { # name of the script in $work, drawing
    "$merix" --headless --script "$work/$1" "$2" >"$work/$1.log.txt" 2>&1 || {
        cat "$work/$1.log.txt" >&2
        fail "merix ended with an error (above)"
    }
}

granted() { # log, direction, field
    sed -n "s/^$2 .*\\b$3=\\([0-9]*\\).*/\\1/p" "$1" | head -n 1
}

# The note's figures as the saved DXF holds them: bytes of sound, rate as filed, duration text.
note_field() { # group code; the last in the record
    awk -v code="$1" '
        { sub(/\r$/, "") }
        NR % 2 { group = $0 + 0; next }
        group == 0 { inside = $0 == "PHONOMARK" }
        inside && group == code { value = $0 }
        END { print value }' "$out/plan.dxf"
}

rm -f "$out"/{plan.dxf,plan.merix,before.png,note.png,spoken.wav,heard.wav,report.json}
cp "$root/samples/plan.dxf" "$out/plan.dxf"
cp "$build/speech/spoken.wav" "$out/spoken.wav"
speech_ms=$((($(stat -c %s "$out/spoken.wav") - 44) / 80))

begin "Starting a private sound server with a virtual microphone and loudspeaker"
start_sound record
end start_sound_server

begin "Opening the floor plan, placing a note and holding the button for a sentence of $((speech_ms / 1000)) seconds"
cat >"$work/record.scr" <<SCRIPT
; A note in the corridor, at the door to the stairs.
@shot $out/before.png
$(printf '%s\n' "${look_at[@]}")
PHONOMARK
$note_at
@hover $spot
@press
@wait $((speech_ms + 1500))
@release
@shot $out/note.png
@save $out/plan.merix
@save $out/plan.dxf
SCRIPT
(
    # The voice begins when the microphone is open.
    until grep -qs '^capture' "$PHONOMARK_AUDIO_LOG"; do sleep 0.02; done
    "$root/scripts/sound-server.sh" speak "$sound"
) &
speaker=$!
run_merix record.scr "$out/plan.dxf"
if ! grep -qs '^capture' "$PHONOMARK_AUDIO_LOG"; then
    cat "$work/record.scr.log.txt" >&2
    fail "the button was held but nothing was recorded"
fi
wait "$speaker"
speaker=
capture_rate=$(granted "$PHONOMARK_AUDIO_LOG" capture rate)
capture_period=$(granted "$PHONOMARK_AUDIO_LOG" capture period)
stop_sound
end record_and_save

duration=$(note_field 3)
bytes=$(note_field 93)
[[ ${bytes:-0} -gt 0 ]] || fail "the saved drawing holds no recording"
# Half of what is stored is padding: two bytes of sound and two zero bytes a frame.
seconds=$(awk -v b="$bytes" -v r="$capture_rate" 'BEGIN { printf "%.3f", b / 4 / r }')
printf '  recorded %s s (the note says %s), %s bytes, at %s samples a second in periods of %s\n' \
    "$seconds" "$duration" "$bytes" "$capture_rate" "$capture_period"

cat >"$work/play.scr" <<SCRIPT
$(printf '%s\n' "${look_at[@]}")
@hover $spot
@press
@release
@wait $((${duration%%.*} * 1000 + 2500))
SCRIPT
hear() { # kind of file, where the sound goes
    begin "Opening plan.$1 afresh, resting the cursor on the note and listening"
    start_sound "play-$1"
    run_merix play.scr "$out/plan.$1"
    "$root/scripts/sound-server.sh" heard "$sound" "$2"
    stop_sound
    end "hear_from_$1"
    likeness=$("$soundcheck" correlate "$out/spoken.wav" "$2")
    peak=$(sed -n 's/.*"peak": \([-0-9.]*\).*/\1/p' <<<"$likeness")
    printf '  what was heard is like what was spoken: %s of 1\n' "$peak"
    awk -v p="$peak" -v least="$least_likeness" 'BEGIN { exit !(p >= least) }' || weak+=" plan.$1"
}
weak=
hear dxf "$work/heard-dxf.wav"
likeness_dxf=$likeness
hear merix "$out/heard.wav"
likeness_merix=$likeness
playback_rate=$(granted "$PHONOMARK_AUDIO_LOG" playback rate)
playback_period=$(granted "$PHONOMARK_AUDIO_LOG" playback period)

all_steps=$(printf ', %s' "${steps[@]}")
cat >"$out/report.json" <<JSON
{
  "seconds_recorded": $seconds,
  "duration_text": "${duration//\"/\\\"}",
  "bytes_stored": $bytes,
  "capture": {"rate": $capture_rate, "period": $capture_period},
  "playback": {"rate": ${playback_rate:-null}, "period": ${playback_period:-null}},
  "correlation": {
    "plan.dxf": $likeness_dxf,
    "plan.merix": $likeness_merix
  },
  "step_seconds": {${all_steps#, }}
}
JSON
[[ -z $weak ]] || fail "the sound from$weak is less than $least_likeness like what was spoken"
printf 'Done. Pictures, sound, both drawings and report.json are in %s\n' "$out"
