# shellcheck shell=bash
# The scripted session of the demo: what the user does, and what must come of it. Sourced by script/demo.

session_app=
session_letter=
session_files=
session_panel=
session_shot=0

session_fail() {
    echo "demo: $*" >&2
    echo "demo: the transcript ends with" >&2
    tail -n 12 "$session_out/transcript.txt" >&2 || true
    echo "demo: and the log with" >&2
    tail -n 12 "$session_out/log.txt" >&2 || true
    exit 1
}

session_stop() {
    local pid
    updates_stop
    for pid in $session_app $session_letter $session_files $session_panel; do
        kill "$pid" 2>/dev/null || true
        wait "$pid" 2>/dev/null || true
    done
    session_app=
    session_letter=
    session_files=
    session_panel=
}

# expect WHAT SECONDS COMMAND...: waits for a condition, and fails in these words when it does not come.
expect() {
    local what=$1 seconds=$2
    shift 2
    wait_until "$seconds" "$@" || session_fail "this did not happen: $what"
}

has_line() {
    grep -Eq -- "$1" "$session_out/transcript.txt"
}

# count NAME: how many notifications of this name there were.
count() {
    grep -c -- " Paneweld\.$1 " "$session_out/transcript.txt" || true
}

count_is() {
    (($(count "$1") == $2))
}

window_named() {
    xdotool search --onlyvisible --name "^$1\$" | tail -n 1 | grep .
}

# The icon in the tray has the same name, and another class.
main_window() {
    xdotool search --onlyvisible --all --class --name '^Ideas$' | tail -n 1 | grep .
}

no_window_named() {
    ! window_named "$1"
}

has_ended() {
    ! kill -0 "$1"
}

is_active() {
    [[ $(xdotool getactivewindow) == "$1" ]]
}

# place WINDOW: sets x, y, width and height to the window's inside, in pixels from the top left of the screen.
place() {
    local text
    text=$(xwininfo -id "$1")
    x=$(awk '/Absolute upper-left X/ { print $NF }' <<<"$text")
    y=$(awk '/Absolute upper-left Y/ { print $NF }' <<<"$text")
    width=$(awk '/^ *Width:/ { print $NF }' <<<"$text")
    height=$(awk '/^ *Height:/ { print $NF }' <<<"$text")
}

# click WINDOW X Y: in the window; a negative number counts from its right or bottom edge.
click() {
    local x y width height at_x=$2 at_y=$3
    place "$1"
    ((at_x >= 0)) || at_x=$((width + at_x))
    ((at_y >= 0)) || at_y=$((height + at_y))
    xdotool mousemove "$((x + at_x))" "$((y + at_y))" click 1
}

# session_still FILE: the whole screen, once nothing moves.
session_still() {
    "$session_build/examples/demo_stage" still "$1"
}

# picture NAME: the same, as the next one of the session.
picture() {
    session_shot=$((session_shot + 1))
    session_still "$session_out/$(printf '%02d' "$session_shot")-$1.png"
}

# film NAME SECONDS COMMAND...: every frame of what the command sets going.
film() {
    local name=$1 seconds=$2 recorder line recorder_pid
    shift 2
    exec {recorder}< <(exec "$session_build/examples/demo_stage" film "$session_out/film-$name" "$seconds")
    recorder_pid=$!
    read -r -t 10 -u "$recorder" line || session_fail "the screen cannot be recorded"
    [[ $line == recording ]] || session_fail "the screen cannot be recorded"
    "$@"
    read -r -t 30 -u "$recorder" line || session_fail "the recording did not end"
    wait "$recorder_pid" || session_fail "the recording failed"
    exec {recorder}<&-
}

# The panel's place on the screen: as wide as it should be, centred, 84 points above the bottom.
check_panel_place() {
    local x y width height area
    place "$1"
    read -r -a area < <(xprop -root _NET_WORKAREA | sed 's/.*= //; s/,//g')
    ((width == 640)) || session_fail "the panel is $width wide"
    ((height == $2)) || session_fail "the panel is $height high and not $2"
    ((area[1] + area[3] - (y + height) == 84)) || session_fail "the panel ends at $((y + height))"
    ((2 * x + width == 2 * area[0] + area[2])) || session_fail "the panel begins at $x and is not in the middle"
}

is_panel_height() {
    local x y width height
    place "$1"
    ((height == $2))
}

# The height that the panel's last change came to, from the transcript; the strip's own before the first.
last_height() {
    awk '/ Paneweld.BrainstormWindowDidResize / { sub(/.*\{height = /, ""); sub(/,.*/, ""); height = $0 }
         END { print height == "" ? 91 : height }' "$session_out/transcript.txt"
}

# Will and did come in pairs, with the same height each.
check_pairs() {
    local unpaired
    unpaired=$(grep -E ' Paneweld\.BrainstormWindow(Will|Did)Resize ' "$session_out/transcript.txt" |
        sed -E 's/.*BrainstormWindow(Will|Did)Resize \{(.*)\}/\1 \2/' |
        awk '$1 == "Will" { if (open != "") print open; $1 = ""; open = $0; next }
             { $1 = ""; if (open != $0) print $0; open = "" } END { if (open != "") print open }')
    [[ -z $unpaired ]] || session_fail "these resizes are not in pairs: $unpaired"
}

# type_idea TEXT: types it with real keys, and leaves Return to the caller.
type_idea() {
    xdotool type --delay 12 -- "$1"
}

# keep_idea PANEL NUMBER: Return, and the panel must grow.
keep_idea() {
    local panel=$1 number=$2 before after
    before=$(last_height)
    xdotool key Return
    expect "the panel answers idea $number" 10 count_is BrainstormWindowDidResize "$number"
    after=$(last_height)
    awk -v before="$before" -v after="$after" 'BEGIN { exit !(after > before) }' ||
        session_fail "the panel did not grow: from $before to $after"
    expect "the panel has its new height" 10 is_panel_height "$panel" "${after%.*}"
}

session_prepare_home() {
    mkdir -p "$XDG_CONFIG_HOME/gtk-3.0" "$XDG_CONFIG_HOME/ideas" "$XDG_DATA_HOME/ideas"
    # A caret that blinks would make every picture another one.
    printf '[Settings]\ngtk-cursor-blink=false\ngtk-icon-theme-name=Adwaita\ngtk-font-name=Cantarell 11\n' \
        >"$XDG_CONFIG_HOME/gtk-3.0/settings.ini"
    # Who has seen the introduction gets the settings from the icon's menu, and not the introduction.
    printf '[Ideas]\nOnboardingSeen=true\n' >"$XDG_CONFIG_HOME/ideas/settings.ini"
    icon_prepare_home
    local day=86400 now
    now=$(date +%s)
    cat >"$XDG_DATA_HOME/ideas/library.ini" <<LIBRARY
[autumn-fair]
Created=$((now - 2 * day))
Ideas=A stall for the autumn fair;Apple rings on strings;Ask Mina about the lanterns;

[kitchen]
Created=$((now - 9 * day))
Ideas=Shelf above the window;Move the lamp to the left;
LIBRARY
    "$session_build/examples/demo_stage" backdrop
}

session_play() {
    session_build=$1
    session_out=$2
    session_prepare_home
    start_panel
    updates_prepare

    echo "demo: playing the session"
    "$HOME/Apps/Ideas/ideas" --window app --transcript "$session_out/transcript.txt" \
        2>"$session_out/log.txt" &
    session_app=$!
    expect "the main window opens, and is called Ideas" 20 main_window
    local main panel settings onboarding
    main=$(main_window)
    expect "the main window is active" 10 is_active "$main"
    play_main_window
    play_panel
    play_shortcut
    play_icon "$main"
    play_settings
    play_onboarding
    play_updates

    # Started anew by its update, it is nobody's child.
    kill -TERM "$session_app"
    expect "the app ends when it is told to" 10 has_ended "$session_app"
    session_app=
    session_stop
    rm -f "$session_out/at-rest.png"
    check_pairs
}

play_main_window() {
    local x y width height
    place "$main"
    ((width == 900 && height == 700)) || session_fail "the main window is $width by $height"
    picture main-window
}

play_panel() {
    click "$main" 132 38
    expect "the panel is recognised" 10 has_line 'Paneweld\.WindowIdentifierDidLoad \{localizedTitle = Brainstorm'
    expect "the panel opens" 10 window_named Brainstorm
    panel=$(window_named Brainstorm)
    expect "the panel is active" 10 is_active "$panel"
    check_panel_place "$panel" 91
    picture panel

    type_idea 'Ask the neighbours for their ladder'
    keep_idea "$panel" 1
    type_idea 'Paint the fence before the rain comes'
    keep_idea "$panel" 2
    picture two-ideas
    type_idea 'Invite everybody for soup afterwards'
    film growing 0.9 keep_idea "$panel" 3
    check_panel_place "$panel" "$(last_height | sed 's/\..*//')"
    picture three-ideas

    click "$panel" -80 -45
    expect "the pinned panel is above" 10 is_above "$panel"
    click "$main" 620 24
    expect "the main window is active again" 10 is_active "$main"
    is_topmost "$panel" || session_fail "the pinned panel is not in front of the main window"
    picture pinned

    click "$panel" 200 -45
    expect "the panel is active again" 10 is_active "$panel"
    local before
    before=$(last_height)
    click "$panel" -34 36
    expect "the panel answers the deletion" 10 count_is BrainstormWindowDidResize 4
    awk -v before="$before" -v after="$(last_height)" 'BEGIN { exit !(after < before) }' ||
        session_fail "the panel did not shrink: from $before to $(last_height)"
    picture one-less

    xdotool key Escape
    expect "Escape closes the panel" 10 no_window_named Brainstorm
    picture closed
}

is_above() {
    xprop -id "$1" _NET_WM_STATE | grep -q _NET_WM_STATE_ABOVE
}

is_topmost() {
    local last
    last=$(xprop -root _NET_CLIENT_LIST_STACKING | sed 's/.* //')
    (($1 == last))
}

play_shortcut() {
    local letter
    "$session_build/examples/demo_letter" >"$session_out/letter.txt" &
    session_letter=$!
    expect "another program opens its window" 10 window_named Letter
    letter=$(window_named Letter)
    expect "the other program is active" 10 is_active "$letter"
    picture letter

    xdotool key ctrl+alt+n
    expect "the shortcut is heard" 10 count_is GlobalNewBrainstormShortcutTriggered 1
    expect "a panel opens for the shortcut" 10 window_named Brainstorm
    panel=$(window_named Brainstorm)
    expect "the new panel is active" 10 is_active "$panel"
    type_idea 'Ask the mill for their long tables'
    picture from-elsewhere
    xdotool key Escape
    expect "the panel closes" 10 no_window_named Brainstorm
    expect "the other program is active again" 10 is_active "$letter"
    count_is GlobalNewBrainstormShortcutTriggered 1 || session_fail "one press opened more than one panel"
}

# How often the shortcut was switched off, which is how each recording begins.
pauses() {
    grep -c 'UpdateGlobalNewBrainstormShortcut {isEnabled = false' "$session_out/transcript.txt" || true
}

is_paused_since() {
    (($(pauses) > $1))
}

is_kept() {
    local kept
    kept=$(sed -n '/^\[Shortcut\]/,$p' "$XDG_CONFIG_HOME/ideas/settings.ini" | tr '\n' ' ')
    [[ $kept == "[Shortcut] keyCode=$1 modifiers=$2 isEnabled=true "* ]]
}

listen_for_shortcut() {
    local before
    before=$(pauses)
    click "$settings" 120 375
    expect "the settings listen for a shortcut" 10 is_paused_since "$before"
    # A pointer that rests brings up an explanation in front of what is to be seen.
    xdotool mousemove 40 860
}

# record KEYS KEYCODE MODIFIERS: types a shortcut into the settings, which must keep it under these numbers.
record() {
    listen_for_shortcut
    xdotool key "$1"
    expect "the shortcut $1 is recorded" 10 is_kept "$2" "$3"
    expect "the shortcut $1 is set" 10 has_line \
        "UpdateGlobalNewBrainstormShortcut \{isEnabled = true, keyCode = $2, modifiers = $3\}"
}

has_refusal() {
    grep -q 'hot key not registered' "$session_out/log.txt"
}

play_settings() {
    local triggered
    expect "the settings open, chosen from the icon's menu" 10 window_named Settings
    settings=$(window_named Settings)
    expect "the settings are active" 10 is_active "$settings"
    # The present combination opens nothing while the settings listen: it would be recorded.
    triggered=$(count GlobalNewBrainstormShortcutTriggered)
    record ctrl+alt+n 45 6144
    listen_for_shortcut
    xdotool keydown ctrl keydown alt
    picture listening
    xdotool keyup alt keyup ctrl key Escape
    count_is GlobalNewBrainstormShortcutTriggered "$triggered" || session_fail "recording opened a panel"

    record ctrl+alt+k 40 6144
    expect "it is told that another program has the shortcut" 10 has_refusal
    picture taken
    record ctrl+c 8 4096
    picture usual
    setxkbmap fr
    record ctrl+alt+a 12 6144
    picture french
    setxkbmap us
    record ctrl+alt+j 38 6144
    picture settings

    # The old shortcut is nobody's any more, and the new one works.
    xdotool key ctrl+alt+n key ctrl+alt+j
    expect "the recorded shortcut opens a panel" 10 window_named Brainstorm
    expect "the panel for the recorded shortcut is active" 10 is_active "$(window_named Brainstorm)"
    count_is GlobalNewBrainstormShortcutTriggered "$((triggered + 1))" ||
        session_fail "the old shortcut opened a panel"
    xdotool key Escape
    expect "the panel closes" 10 no_window_named Brainstorm
    expect "the settings are active again" 10 is_active "$settings"

    click "$settings" -68 495
    expect "the dark appearance is chosen and kept" 10 grep -q '^DarkAppearance=true' "$XDG_CONFIG_HOME/ideas/settings.ini"
    picture dark
    xdotool key ctrl+w
    expect "the settings close" 10 no_window_named Settings
}

play_onboarding() {
    click "$main" 90 -68
    expect "the introduction opens" 10 window_named 'Welcome to Ideas'
    onboarding=$(window_named 'Welcome to Ideas')
    expect "the introduction is active" 10 is_active "$onboarding"
    click "$onboarding" 200 -60
    picture onboarding
}
