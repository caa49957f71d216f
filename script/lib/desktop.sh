# shellcheck shell=bash
# A desktop of its own for a command: X server, window manager, compositor, bus, home. Sourced, not run.
#
#   desktop_start [--compositor]   starts it and exports what programs need to find it; run it in the script's own shell
#   desktop_stop                   ends all of it, and nothing else; call it from a trap
#
# DESKTOP_SCREEN (default 1280x800) is the size of the screen in pixels.

desktop_lib_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
desktop_pids=()
desktop_dir=

desktop_fail() {
    echo "desktop: $*" >&2
    return 1
}

# wait_until SECONDS COMMAND...: asks again until the command succeeds.
wait_until() {
    local end=$((${EPOCHREALTIME/[.,]/} + $1 * 1000000))
    shift
    until "$@" >/dev/null 2>&1; do
        ((${EPOCHREALTIME/[.,]/} < end)) || return 1
        sleep 0.02
    done
}

desktop_has_window_manager() {
    xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id'
}

desktop_answers_or_died() {
    ! kill -0 "$1" || xdpyinfo -display "$2"
}

# Takes the first free display number; another session may take the same one at the same time, so a server that
# ends at once is no failure yet.
desktop_start_server() {
    local number pid
    for number in {90..250}; do
        [[ -e /tmp/.X$number-lock || -e /tmp/.X11-unix/X$number ]] && continue
        Xvfb ":$number" -screen 0 "${DESKTOP_SCREEN:-1280x800}x24" -dpi 96 -nolisten tcp -noreset \
            >"$desktop_dir/server.log" 2>&1 &
        pid=$!
        wait_until 20 desktop_answers_or_died "$pid" ":$number" || true
        if kill -0 "$pid" 2>/dev/null; then
            desktop_pids+=("$pid")
            export DISPLAY=":$number"
            return 0
        fi
    done
    desktop_fail "no X server could be started, see $(tail -n 1 "$desktop_dir/server.log")"
}

desktop_start_bus() {
    local address
    exec {desktop_bus_output}< <(exec dbus-daemon --session --nofork --print-address=1 2>"$desktop_dir/bus.log")
    desktop_pids+=("$!")
    read -r -t 20 -u "$desktop_bus_output" address || desktop_fail "no D-Bus session could be started"
    export DBUS_SESSION_BUS_ADDRESS=$address
}

desktop_start_window_manager() {
    install -D -m 644 "$desktop_lib_dir/openbox-themerc" "$HOME/.themes/Calm/openbox-3/themerc"
    openbox --sm-disable --config-file "$desktop_lib_dir/openbox-rc.xml" >"$desktop_dir/openbox.log" 2>&1 &
    desktop_pids+=("$!")
    wait_until 20 desktop_has_window_manager || desktop_fail "no window manager could be started"
}

desktop_start_compositor() {
    picom --backend xrender --config "$desktop_lib_dir/picom.conf" >"$desktop_dir/picom.log" 2>&1 &
    desktop_pids+=("$!")
    # Its overlay covers the screen from the moment on that it draws.
    wait_until 20 desktop_is_composited || desktop_fail "no compositor could be started"
}

desktop_is_composited() {
    xwininfo -root -tree | grep -q 'picom'
}

desktop_start() {
    desktop_dir=$(mktemp -d)
    mkdir -m 700 "$desktop_dir"/{home,runtime,config,data,cache}
    export HOME=$desktop_dir/home XDG_RUNTIME_DIR=$desktop_dir/runtime XDG_CONFIG_HOME=$desktop_dir/config
    export XDG_DATA_HOME=$desktop_dir/data XDG_CACHE_HOME=$desktop_dir/cache
    export GDK_BACKEND=x11 QT_QPA_PLATFORM=xcb SDL_VIDEODRIVER=x11 GSK_RENDERER=cairo LIBGL_ALWAYS_SOFTWARE=1
    export NO_AT_BRIDGE=1 GTK_A11Y=none
    unset WAYLAND_DISPLAY XAUTHORITY DESKTOP_STARTUP_ID GTK_THEME GTK_CSD GDK_SCALE GDK_DPI_SCALE

    desktop_start_server
    desktop_start_bus
    desktop_start_window_manager
    if [[ ${1:-} == --compositor ]]; then
        desktop_start_compositor
    fi
}

desktop_stop() {
    local index
    # The last started ends first: clients before their server.
    for ((index = ${#desktop_pids[@]} - 1; index >= 0; --index)); do
        kill "${desktop_pids[index]}" 2>/dev/null || true
        wait "${desktop_pids[index]}" 2>/dev/null || true
    done
    desktop_pids=()
    [[ -z $desktop_dir ]] || rm -rf "$desktop_dir"
    desktop_dir=
}
