# shellcheck shell=bash
# Puts the pictures of the scripted session side by side, with a line of words under each. Sourced by script/demo.

# The program, under the name that Debian gives it whatever else is called "convert" on a machine.
image_magick() {
    command -v convert-im6.q16 || command -v convert-im6 || echo /usr/bin/convert
}

strip_font() {
    fc-match -f '%{file}' "Cantarell:$1"
}

# strip_card PICTURE CAPTION WIDTH [CROP]: one picture with its caption, on standard output.
strip_card() {
    local picture=$1 caption=$2 width=$3 crop=${4:-}
    local cut=()
    [[ -z $crop ]] || cut=(-crop "$crop" +repage)
    "$strip_im" \( "$picture" "${cut[@]}" -filter Lanczos -resize "${width}x" \
        -bordercolor '#3a3a48' -border 1 \) \
        \( -background '#1f1f28' -fill '#d9d9e4' -font "$(strip_font regular)" -pointsize 15 \
        -size "$((width + 2))x44" -gravity center caption:"$caption" \) \
        -background '#1f1f28' -append -bordercolor '#1f1f28' -border 9x4 miff:-
}

# strip_row FILE CARD...: cards are files made by strip_card.
strip_row() {
    local row=$1
    shift
    "$strip_im" "$@" -background '#1f1f28' +append "$row"
}

# strip_pick PREFIX NUMBER: so many frames of a film, evenly spread, the first and the last among them.
strip_pick() {
    local frames=("$1"-*.png) number=$2 index
    ((${#frames[@]} >= number)) || number=${#frames[@]}
    for ((index = 0; index < number; ++index)); do
        echo "${frames[index * (${#frames[@]} - 1) / (number - 1)]}"
    done
}

# strip_cards WIDTH CROP ENTRY...: sets cards to one card for each entry "picture|caption".
strip_cards() {
    local width=$1 crop=$2 entry card
    shift 2
    cards=()
    for entry in "$@"; do
        card=$strip_dir/${entry%%|*}${crop:+-close}.miff
        strip_card "$(find "$strip_pictures" -maxdepth 1 -name "[0-9][0-9]-${entry%%|*}.png")" "${entry#*|}" \
            "$width" "$crop" >"$card"
        cards+=("$card")
    done
}

# film_strip FOLDER: all of it into FOLDER/film-strip.png.
film_strip() {
    local out=$1 index frame
    strip_pictures=$out
    strip_im=$(image_magick)
    strip_dir=$(mktemp -d)
    echo "demo: composing the film strip"

    local stills=(
        "main-window|The main window, raised to 900 by 700 and centred"
        "panel|A new panel: 640 by 91, 84 points above the bottom"
        "two-ideas|Two ideas later"
        "three-ideas|Three ideas: the entry never moved"
        "pinned|Pinned: in front, while the main window is active"
        "one-less|One idea deleted: it shrinks again"
        "closed|Escape sends it away"
        "letter|Another program is in front"
        "from-elsewhere|Ctrl+Alt+N there: a new panel, ready for typing"
        "files|A file manager, and the app's icon in the tray"
        "dropped|Two files dropped on it: they are ideas now"
        "updates|And in the library. A check: it is up to date"
        "settings|The settings, with another shortcut recorded"
        "dark|And dark, as just chosen"
        "onboarding|The introduction"
    )
    local details=(
        "listening|A click, and it listens"
        "taken|Another program has it: it says so"
        "usual|A usual command: it warns"
        "french|A place, whatever is written there"
    )
    local corner=(
        "dragging|On their way to the icon"
        "menu|A right click: its menu"
        "chosen|Chosen with the keyboard"
    )
    local news=(
        "offer|A new release: it is offered"
        "downloading|Half way; checked when all is there"
        "installed|In its place, and nothing interrupted"
        "restarted|Restarted: the newest"
    )
    local cards=() rows=()
    strip_cards 325 440x150+996+740 "${news[@]}"
    strip_row "$strip_dir/row-9.miff" "${cards[@]}"
    strip_cards 325 372x190+534+421 "${details[@]}"
    strip_row "$strip_dir/row-7.miff" "${cards[@]}"
    strip_cards 440 420x205+1020+0 "${corner[@]}"
    strip_row "$strip_dir/row-6.miff" "${cards[@]}"
    strip_cards 440 '' "${stills[@]}"

    local frames=() captions=("Return" "" "" "" "at rest") number=0
    mapfile -t frames < <(strip_pick "$out/film-growing" 5)
    local moving=()
    for frame in "${frames[@]}"; do
        number=$((number + 1))
        strip_card "$frame" "${captions[number - 1]:-on the way}" 256 700x350+370+500 >"$strip_dir/frame-$number.miff"
        moving+=("$strip_dir/frame-$number.miff")
    done

    strip_row "$strip_dir/row-1.miff" "${cards[@]:0:3}"
    strip_row "$strip_dir/row-2.miff" "${moving[@]}"
    strip_row "$strip_dir/row-3.miff" "${cards[@]:3:3}"
    strip_row "$strip_dir/row-4.miff" "${cards[@]:6:3}"
    strip_row "$strip_dir/row-5.miff" "${cards[@]:9:3}"
    strip_row "$strip_dir/row-8.miff" "${cards[@]:12:3}"
    for index in {1..9}; do
        rows+=("$strip_dir/row-$index.miff")
    done
    "$strip_im" "${rows[@]}" -background '#1f1f28' -gravity center -append -bordercolor '#1f1f28' -border 10x12 \
        -dither None -colors 255 "PNG8:$out/film-strip.png"
    rm -rf "$strip_dir"
}
