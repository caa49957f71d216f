# shellcheck shell=bash
# The part of the scripted session about updates: an app that is installed, its maker who signs a release and serves it
# on the loopback, and the desktop's notifications, which the user answers. Sourced by script/demo.

updates_lib_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
updates_pids=()
updates_dir=

updates_stop() {
    local pid
    for pid in "${updates_pids[@]}"; do
        kill "$pid" 2>/dev/null || true
        wait "$pid" 2>/dev/null || true
    done
    updates_pids=()
}

# shellcheck disable=SC2154 # The session's names.
updates_prepare() {
    local port
    updates_dir=$HOME/maker
    mkdir -p "$updates_dir/served"
    cp "$updates_lib_dir/xfce4-notifyd.xml" "$XDG_CONFIG_HOME/xfce4/xfconf/xfce-perchannel-xml/"
    openssl genpkey -algorithm ed25519 -out "$updates_dir/key.pem"
    mkfifo "$updates_dir/gate"
    exec {updates_server}< <(exec python3 "$updates_lib_dir/update-server.py" \
        "$updates_dir/served" "$updates_dir/gate" 2>"$updates_dir/server.log")
    updates_pids+=("$!")
    read -r -t 20 -u "$updates_server" port || session_fail "the server of updates does not start"
    updates_url=http://127.0.0.1:$port
    updates_install "$HOME/Apps/Ideas" 1.0
    updates_publish ''

    dbus-monitor --session "interface='org.freedesktop.Notifications'" >"$session_out/notices.txt" &
    updates_pids+=("$!")
    expect "the notifications are heard" 10 grep -q NameAcquired "$session_out/notices.txt"
}

# updates_install FOLDER VERSION: the app as users have it, a folder of its own.
# shellcheck disable=SC2154 # The session's names.
updates_install() {
    mkdir -p "$1"
    cp -r "$session_build/ideas" "$session_build/Frameworks" "$1/"
    cat >"$1/Info.plist" <<INFO
{
    CFBundleIdentifier = "org.example.Ideas";
    CFBundleVersion = "$2";
    SUFeedURL = "$updates_url/feed.xml";
    SUPublicEDKey = "$(openssl pkey -in "$updates_dir/key.pem" -pubout -outform DER | tail -c 32 | base64)";
    SUEnableAutomaticChecks = NO;
}
INFO
}

# updates_publish ITEMS: as the feed, in one step.
updates_publish() {
    cat >"$updates_dir/feed.new" <<FEED
<rss version="2.0" xmlns:sparkle="http://www.andymatuschak.org/xml-namespaces/sparkle"><channel>
<title>Ideas</title>
$1
</channel></rss>
FEED
    mv "$updates_dir/feed.new" "$updates_dir/served/feed.xml"
}

# updates_release VERSION: an archive, signed as a whole, and an item about it in the feed.
updates_release() {
    local archive=$updates_dir/served/Ideas-$1.tar.gz signature
    updates_install "$updates_dir/$1/Ideas" "$1"
    tar --create --gzip --file="$archive" --directory="$updates_dir/$1" Ideas
    openssl pkeyutl -sign -rawin -inkey "$updates_dir/key.pem" -in "$archive" -out "$updates_dir/signature"
    signature=$(base64 --wrap=0 "$updates_dir/signature")
    updates_publish "<item><title>Ideas $1</title><sparkle:version>$1</sparkle:version>
<enclosure url=\"$updates_url/Ideas-$1.tar.gz\" length=\"$(stat --format=%s "$archive")\"
 sparkle:edSignature=\"$signature\" type=\"application/gzip\"/></item>"
}

notice_window() {
    xdotool search --onlyvisible --class '^Xfce4-notifyd$' | tail -n 1 | grep .
}

no_notice_window() {
    ! notice_window
}

# has_notice TEXT: whether the app has told the desktop to show it.
has_notice() {
    grep -q "string \"$1\"" "$session_out/notices.txt"
}

# shows TEXT: the app has said it, and the desktop has a window for it.
shows() {
    has_notice "$1" && notice_window
}

# press_notice X: on the row of buttons at the bottom; a negative number counts from the right edge.
press_notice() {
    session_still "$session_out/at-rest.png"
    click "$(notice_window)" "$1" -30
}

ask_for_updates() {
    local menu before
    before=$(count CheckForUpdates)
    open_menu
    click "$menu" 40 -50
    expect "the menu closes" 10 no_menu_window
    expect "the app is asked for updates" 10 count_is CheckForUpdates "$((before + 1))"
}

# shellcheck disable=SC2154 # The session's names.
play_updates() {
    local app=$session_app
    updates_release 1.1
    ask_for_updates
    expect "the update is offered" 20 shows 'Ideas 1.1 is available'
    picture offer
    press_notice 60
    expect "the download is on its way" 20 has_notice '5[0-9] %'
    picture downloading
    : >"$updates_dir/gate"
    expect "the update is installed" 30 shows 'Ideas 1.1 is installed'
    grep -q '"1.1"' "$HOME/Apps/Ideas/Info.plist" || session_fail "the old version is still in its place"
    picture installed
    kill -0 "$app" || session_fail "the app ended before anybody said so"

    press_notice -60
    expect "the app ends" 20 has_ended "$app"
    wait "$app" || session_fail "the app did not end well"
    session_app=
    expect "the new version opens its window" 20 main_window
    session_app=$(xdotool getwindowpid "$(main_window)")
    ((session_app != app)) || session_fail "the old version goes on"
    expect "the tray takes the new one's icon" 20 icon_window
    expect "the last notice goes" 20 no_notice_window
    ask_for_updates
    expect "the new version is the newest" 20 shows "You’re up to date"
    picture restarted
}
