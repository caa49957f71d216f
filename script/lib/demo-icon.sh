# shellcheck shell=bash
# The part of the scripted session around the app's icon: the panel that has the tray, the file manager that files are
# dragged out of, and what the user does with both. Sourced by script/demo.

icon_lib_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

icon_prepare_home() {
    local channels=$XDG_CONFIG_HOME/xfce4/xfconf/xfce-perchannel-xml
    mkdir -p "$channels" "$HOME/Papers"
    cp "$icon_lib_dir/xfce4-panel.xml" "$icon_lib_dir/thunar.xml" "$channels/"
    # The file manager warns root in every window, and the session may be played in a container.
    echo 'infobar, infobar * { font-size: 0; min-height: 0; padding: 0; margin: 0; border: none; background: #fff; }' \
        >"$XDG_CONFIG_HOME/gtk-3.0/gtk.css"
    echo 'Six lengths, oiled twice' >"$HOME/Papers/Offer for the fence.pdf"
    echo 'Tables under the trees' >"$HOME/Papers/Plan of the fête.png"
}

# The panel has taken its place at the top, which windows are placed below.
has_panel() {
    [[ $(xprop -root _NET_WORKAREA) =~ =\ [0-9]+,\ [1-9] ]]
}

# shellcheck disable=SC2034,SC2154 # Both names are the session's.
start_panel() {
    xfce4-panel --sm-client-disable --disable-wm-check >"$session_out/panel-log.txt" 2>&1 &
    session_panel=$!
    expect "the panel opens" 20 has_panel
}

# The app's window inside the tray.
icon_window() {
    xdotool search --onlyvisible --class '^org\.example\.Ideas$' | tail -n 1 | grep .
}

menu_window() {
    xdotool search --onlyvisible --class '^Paneweld$' | tail -n 1 | grep .
}

no_menu_window() {
    ! menu_window
}

# press_icon BUTTON
press_icon() {
    local x y width height
    place "$(icon_window)"
    xdotool mousemove "$((x + width / 2))" "$((y + height / 2))" click "$1"
}

open_menu() {
    press_icon 3
    expect "the icon's menu opens" 10 menu_window
    menu=$(menu_window)
}

# drag FROM_X FROM_Y TO_X TO_Y: in steps as a hand makes them, with the button down. Programs begin a drag only after
# some way, and look at each step of it.
drag() {
    local step steps=16
    for ((step = 0; step <= steps; ++step)); do
        xdotool mousemove "$(($1 + ($3 - $1) * step / steps))" "$(($2 + ($4 - $2) * step / steps))"
        ((step > 0)) || xdotool mousedown 1
    done
}

# play_icon MAIN: ends with the settings, asked for by the menu.
play_icon() {
    local main=$1 menu
    expect "the tray takes the icon" 20 icon_window
    play_drop
    play_menu
}

play_drop() {
    local files x y width height from_x from_y to_x to_y step
    thunar "$HOME/Papers" >"$session_out/files-log.txt" 2>&1 &
    session_files=$!
    expect "a file manager opens" 20 window_named 'Papers - Thunar'
    files=$(window_named 'Papers - Thunar')
    xdotool windowmove "$files" 960 96
    expect "the file manager is active" 10 is_active "$files"
    expect "both files are selected" 10 select_all "$files"
    picture files

    place "$files"
    from_x=$((x + 64)) from_y=$((y + 64))
    place "$(icon_window)"
    to_x=$((x + width / 2)) to_y=$((y + height / 2))
    drag "$from_x" "$from_y" "$((to_x - 90))" "$((to_y + 50))"
    picture dragging
    # The icon answers each step, which nobody sees; a hand that lets go before it has answered drops nothing.
    for step in 4 3 2 1; do
        xdotool mousemove "$((to_x - step))" "$to_y"
        session_still "$session_out/at-rest.png"
    done
    xdotool mouseup 1

    expect "the app hears of two files, names and all" 10 has_line \
        'ImportDroppedURLs \{urls = .*/Offer%20for%20the%20fence\.pdf.*/Plan%20of%20the%20f%C3%AAte\.png'
    expect "a panel opens for the files" 10 window_named Brainstorm
    panel=$(window_named Brainstorm)
    expect "the panel with the files is active" 10 is_active "$panel"
    expect "the panel is as high as the files need" 10 is_panel_higher "$panel" 91
    xdotool mousemove 720 880
    picture dropped
    xdotool key Escape
    expect "the panel closes" 10 no_window_named Brainstorm
    kill "$session_files"
    wait "$session_files" 2>/dev/null || true
    session_files=
    expect "the file manager closes" 10 no_window_named 'Papers - Thunar'
}

# select_all FILES: true once the colour of what is selected stands in the window. Keys that come before the folder has
# been read select nothing.
select_all() {
    local x y width height
    xdotool key ctrl+a
    session_still "$session_out/at-rest.png"
    place "$1"
    "$(image_magick)" "$session_out/at-rest.png" -crop "${width}x$height+$x+$y" -unique-colors txt: | grep '#3584E4'
}

is_panel_higher() {
    local x y width height
    place "$1"
    ((height > $2))
}

play_menu() {
    open_menu
    picture menu
    click "$menu" 40 -50
    expect "the menu closes" 10 no_menu_window
    expect "the app is asked for updates" 10 count_is CheckForUpdates 1
    expect "the main window comes to the front" 10 is_active "$main"
    expect "there is no newer version yet" 20 shows "You’re up to date"
    picture updates
    expect "the notice goes" 20 no_notice_window

    open_menu
    xdotool key Down key Down key Down
    picture chosen
    xdotool key Return
    expect "the app is asked for its settings" 10 count_is OpenSettingsOrOnboarding 1
}
