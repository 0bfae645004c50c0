#!/usr/bin/env bash
# Makes docs/screenshots/ anew: every window in both languages, at 1x and 2x, at rest and in a run.
# Needs a release build, and the packages xvfb, xdotool, imagemagick and pulseaudio.
set -euo pipefail

root=$(dirname -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")")
program=$root/build/release/melvane
pictures=$root/docs/screenshots
work=$(mktemp -d "${TMPDIR:-/tmp}/melvane-XXXXXX") # its name can be read in the pictures
music=$work/Music
jobs=()

cleanup() {
    kill "${jobs[@]}" 2>/dev/null || true
    wait 2>/dev/null || true
    rm -rf -- "$work"
}
trap cleanup EXIT

start_servers() {
    export DISPLAY=:97 XDG_RUNTIME_DIR=$work/run XDG_CONFIG_HOME=$work/config XDG_CACHE_HOME=$work/cache
    export PULSE_SERVER=unix:$work/sound QT_QPA_PLATFORM=xcb
    mkdir -p -m 700 "$XDG_RUNTIME_DIR" "$XDG_CONFIG_HOME/Tessaro"
    Xvfb "$DISPLAY" -wr -screen 0 2800x1600x24 >/dev/null 2>&1 &
    jobs+=($!)
    pulseaudio -n --daemonize=no --exit-idle-time=-1 --use-pid-file=no --disable-shm=yes \
        -L "module-native-protocol-unix auth-anonymous=1 socket=$work/sound" \
        -L module-null-sink >/dev/null 2>&1 &
    jobs+=($!)
    for _ in {1..100}; do
        xdotool getmouselocation >/dev/null 2>&1 && [[ -S $work/sound ]] && break
        sleep 0.1
    done
}

# The settings that every start begins with: where the windows stand, and a picture worth looking at.
write_settings() {
    cat >"$XDG_CONFIG_HOME/Tessaro/registry.json" <<JSON
{"HKEY_CURRENT_USER\\\\software\\\\Tessaro\\\\Melvane": {"language": "$1", "positionXY": "60,60",
  "volume": "84,92", "audio effects": "1,35;0,20;1,60;0,40", "audio preset": "12",
  "bass & treble": "40,50,62,38", "balance": "-31,13"},
 "HKEY_CURRENT_USER\\\\software\\\\Tessaro\\\\Melvane\\\\windows": {"frmEff": "60,270", "frmChann": "540,270",
  "frmIns": "780,490", "mnuHelp": "540,50", "frmTimeline": "540,270", "frmTimeline size": "760,358",
  "zoom": "100"}}
JSON
}

# Places are in pixels of the windows; the main window stands at 60,60. Without a window manager, keys go to the window
# under the mouse.
at() { xdotool mousemove $((($1) * scale)) $((($2) * scale)); }
press() { at "$1" "$2" && xdotool click "${3:-1}" && sleep 0.5; }
click() { press $(($1 + 60)) $(($2 + 60)) "${3:-1}"; }

# shoot NAME X Y WIDTH HEIGHT: that part of the screen, in pixels of the windows.
shoot() {
    at 1300 20
    sleep 0.5
    import -window root png:- |
        convert - -crop "$(($4 * scale))x$(($5 * scale))+$(($2 * scale))+$(($3 * scale))" +repage -strip \
            +dither -colors 255 "PNG8:$pictures/$1-$language-${scale}x.png"
}

# wait_for NAME: until a window of that name is there.
wait_for() { timeout 20 xdotool search --sync --onlyvisible --name "$1" >/dev/null; }

# run_program SONG: the program with its files chosen, from the start window to the main window.
run_program() {
    write_settings "$language"
    cp -- "$root/samples/$1" "$root/samples/evening-ferry-voice.wav" "$music/"
    rm -f -- "$music/"evening-ferry2.mp3
    QT_SCALE_FACTOR=$scale "$program" "$music/$1" "$music/evening-ferry-voice.wav" &
    running=$!
    wait_for Melvane
    sleep 1
}

quit_program() {
    kill "$running" 2>/dev/null || true
    wait "$running" 2>/dev/null || true
}

# find_window NAME: puts its place into x and y.
find_window() {
    local X Y
    wait_for "$1"
    eval "$(xdotool search --onlyvisible --name "$1" getwindowgeometry --shell)"
    x=$((X / scale)) y=$((Y / scale))
}

shoot_start_window() {
    find_window Melvane
    shoot start "$x" "$y" 274 174
    continue_from_start
}

# It opens beside the others.
shoot_player() {
    find_window '^(Listen|Ods)'
    press $((x + 33)) $((y + 107))
    sleep 2
    shoot player "$x" "$y" 274 146
}

# Opened from the overview bar, and closed again.
shoot_timeline() {
    click 100 159
    sleep 2
    shoot "$1" 540 270 760 358
    at 900 300
    xdotool key Escape
    sleep 0.5
}

# The start window is in the middle of the screen.
continue_from_start() {
    press $((1400 / scale)) $((800 / scale + 49))
    sleep 1.5
}

shoot_all() {
    run_program evening-ferry.mp3
    shoot_start_window
    shoot main-rest 60 60 460 196
    click 239 130
    shoot effects-rest 60 270 460 210
    click 377 11
    shoot menu 60 60 840 570
    click 200 11
    click 406 11
    shoot preferences-audio 540 50 460 210
    press 760 93
    shoot preferences-language 540 50 460 210
    press 852 93
    shoot preferences-rehearsal 540 50 460 210
    press 940 93
    shoot preferences-about 540 50 460 210
    press 930 237
    shoot_timeline timeline
    click 60 130
    sleep 6
    shoot main-run 60 60 460 196
    shoot effects-run 60 270 460 210
    click 147 130
    shoot_player
    quit_program

    run_program evening-ferry.kar
    continue_from_start
    shoot_timeline timeline-midi
    click 203 130
    shoot channels-rest 540 270 460 210
    click 60 130
    sleep 5
    press 622 303
    shoot channels-run 540 270 460 210
    at 650 430
    xdotool click --repeat 2 --delay 60 1
    sleep 1
    shoot instruments 1008 270 274 174
    quit_program
}

mkdir -p "$pictures" "$music"
rm -f -- "$pictures"/*.png
start_servers
for language in en pl; do
    for scale in 1 2; do shoot_all; done
done
