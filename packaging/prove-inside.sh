#!/usr/bin/env bash
# The journey of a package through a bare system, as prove-package.sh starts it there: installed, used, taken away.
set -euo pipefail
cd /srv/melvane
user=singer
home=/home/$user

step() { printf '\n== %s\n' "$*"; }

die() {
    printf 'NOT PROVEN: %s\n' "$*" >&2
    exit 1
}

# expect TEXT COMMAND...: shows what the command says, which has to contain the text.
expect() {
    local wanted=$1 told
    shift
    told=$("$@" 2>&1) || die "$*: $told"
    printf '$ %s\n%s\n' "$*" "$(tail -n 4 <<<"$told")"
    [[ $told == *"$wanted"* ]] || die "$* doesn't tell: $wanted"
}

add() { apt-get install --quiet --quiet --yes "$@" >/tmp/apt.log 2>&1 || die "apt-get install $*: $(tail -n 20 /tmp/apt.log)"; }

as_user() {
    setpriv --reuid="$user" --regid="$user" --init-groups env HOME="$home" USER="$user" DISPLAY=:7 SHELL=/bin/bash \
        XDG_RUNTIME_DIR=/run/singer "$@"
}

# Every file of the system but those of apt, of dpkg, of what runs, of logs, of people, and links to certificates.
all_files() {
    find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /tmp -o -path /run -o -path /srv -o -path /home \
        -o -path /var/log -o -path /var/cache/apt -o -path /var/lib/apt -o -path '/var/lib/dpkg/*' \
        -o -path /var/cache/debconf -o -path /etc/ssl/certs \) -prune -o -print | sort
}

installed_packages() { dpkg-query -W -f '${Package}\n' | sort -u; }

note_state() {
    all_files >/tmp/files
    installed_packages >/tmp/packages
}

# take_away [OPTION]: the package goes, and nothing that is not of another package may have come since the state was noted.
take_away() {
    local others left
    apt-get purge --quiet --quiet --yes "$@" melvane >/dev/null 2>&1 || die "the package can't be taken away."
    mapfile -t others < <(comm -13 /tmp/packages <(installed_packages))
    printf 'Other packages that came and stayed: %s\n' "${others[*]:-none}"
    left=$(comm -13 /tmp/files <(all_files))
    if ((${#others[@]})); then left=$(comm -23 <(printf '%s\n' "$left") <(dpkg-query -L "${others[@]}" | sort -u)); fi
    printf 'Files of no package that came and stayed:\n%s\n' "${left:-none}"
    if grep -Eiq 'melvane|libbass' <<<"$left"; then die "files of the package stayed."; fi
    if grep -rIl melvane /etc /usr/share /var/lib/dpkg/info /var/lib/dpkg/status 2>/dev/null; then
        die "these files still tell of the package."
    fi
}

# within_a_minute COMMAND...: asks until the command succeeds; false when it doesn't.
within_a_minute() {
    local end=$((SECONDS + 60))
    until "$@" >/dev/null 2>&1; do
        ((SECONDS < end)) || return 1
        sleep 0.2
    done
}

window_titled() {
    within_a_minute as_user xdotool search --onlyvisible --name "$1" ||
        die "no window titled $1, but: $(as_user xdotool search --onlyvisible --name . getwindowname %@ 2>&1)"
    printf 'A window is titled %s\n' "$1"
}

step "Installed on the bare system: $(. /etc/os-release && echo "$PRETTY_NAME"), $(dpkg -l | grep -c ^ii) packages"
useradd --create-home --shell /bin/bash "$user"
install --directory --mode=700 --owner="$user" /run/singer
chown -R "$user" /srv/melvane
apt-get update --quiet --quiet
note_state
add ./melvane_*.deb
# shellcheck disable=SC2016 # The fields are dpkg-query's own.
expect "ok installed" dpkg-query -W -f '${Package} ${Version} ${Status}\n' melvane lame timgm6mb-soundfont ffmpeg
for file in /usr/lib/*/melvane/*; do
    if ldd "$file" | grep 'not found'; then die "$file lacks libraries."; fi
done
expect "melvane-mix 0." as_user melvane-mix --version
expect "" as_user melvane-mix --quiet --overwrite evening-ferry.mp3 evening-ferry-voice.wav mix.mp3
expect mp3,30. ffprobe -loglevel error -of csv=p=0 -show_entries stream=codec_name,duration mix.mp3
expect "" as_user melvane-mix --quiet --overwrite --mute 4 evening-ferry.kar evening-ferry-voice.wav midi.mp3
expect mp3,30. ffprobe -loglevel error -of csv=p=0 -show_entries stream=codec_name,duration midi.mp3

step "Taken away with what came along"
take_away --auto-remove

step "Installed beside a desktop"
add xvfb openbox xdotool libgtk-3-bin libglib2.0-bin xdg-utils shared-mime-info desktop-file-utils gtk-update-icon-cache \
    hicolor-icon-theme man-db bash-completion procps
# Its dependencies first: what stays behind is then the package's own.
mapfile -t others < <(apt-get install --simulate ./melvane_*.deb | sed -n 's/^Inst \([^ ]*\).*/\1/p' | grep -vx melvane)
add "${others[@]}"
note_state
add ./melvane_*.deb

step "Manual pages and completion"
for program in melvane melvane-mix; do
    expect "$program - " as_user man --locale=C "$program"
done
# A real key on a real terminal.
printf 'source /etc/bash_completion\nmelvane-mix --vers\t\nexit\n' >/tmp/keys
expect "melvane-mix 0." as_user script --quiet --return --command 'bash --norc -i' /dev/null </tmp/keys

step "Open with"
printf '{"melvane job": 1, "song": {"path": "/srv/melvane/evening-ferry.kar"}}' >evening.melvane
cp evening.melvane morning.melvane
for type in audio/mpeg audio/ogg audio/midi audio/x-wav audio/mp4 audio/flac application/x-melvane-job; do
    expect melvane.desktop as_user gio mime "$type"
done
expect application/x-melvane-job as_user gio info -a standard::content-type,standard::icon evening.melvane
expect application/x-melvane-job as_user xdg-mime query filetype evening.melvane
expect melvane.desktop as_user xdg-mime query default application/x-melvane-job

step "Started from the menu"
# A display that starts anew behind its last window would take along those that are just being opened.
as_user Xvfb :7 -screen 0 1600x1000x24 -nolisten tcp -noreset >/dev/null 2>&1 &
within_a_minute as_user xdotool getdisplaygeometry || die "the display doesn't start."
as_user openbox >/dev/null 2>&1 &
within_a_minute as_user xdotool get_num_desktops || die "the window manager doesn't start."
as_user gtk-launch melvane
window_titled '^Melvane$'
sleep 1
as_user xdotool search --onlyvisible --name '^Melvane$' windowfocus --sync key Return
sleep 5
expect Melvane as_user xdotool search --onlyvisible --name . getwindowname %@

step "Opened from a file manager, by the program that runs"
as_user gio open evening.melvane
window_titled '^evening.melvane – Melvane$'
expect evening.melvane as_user xdotool search --onlyvisible --name melvane getwindowname
as_user gio open morning.melvane
window_titled '^morning.melvane – Melvane$'
as_user gio launch /usr/share/applications/melvane.desktop evening-ferry.mp3
window_titled '^morning.melvane\* – Melvane$'
running=$(pgrep --exact melvane)
[[ $(wc -l <<<"$running") == 1 ]] || die "several programs run: $running"
kill "$running"
timeout 20 tail --pid="$running" -f /dev/null || die "the program doesn't end."

step "Taken away"
take_away
if as_user gio mime application/x-melvane-job | grep melvane.desktop; then die "the desktop still opens jobs."; fi
step "Proven"
