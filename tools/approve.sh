#!/bin/bash
# Makes what the window shows now what the tests in tests/golden expect from now on:
#
#   tools/approve.sh          draw everything, approve it
#   tools/approve.sh --look   draw everything, approve nothing
#
# Prints what is new, changed and gone, and leaves sheets of nine to look at in build/dev/golden:
# the changed pictures, approved beside drawn beside the difference, and all pictures of each
# appearance. Approving changes files of the tree: look at them before they are committed.
set -euo pipefail
cd "$(dirname "$0")/.."

case ${1-} in
    "") approve=yes ;;
    --look) approve=no ;;
    *)
        sed -n '2,/^set/s/^# \{0,1\}//p' "$0" >&2
        exit 2
        ;;
esac

golden=tests/golden
out=$PWD/build/dev/golden
drawn=$out/drawn
program=build/dev/bin/tavo_golden_tests
evidence=build/dev/Testing/golden

echo "Building"
mkdir -p build/dev
{ cmake --preset dev && cmake --build build/dev --target tavo_golden_tests; } \
    >build/dev/build.log 2>&1 || {
    cat build/dev/build.log >&2
    exit 1
}
rm -rf "$out" "$evidence"
mkdir -p "$drawn"

# Compared first, for the differences; then written down. A picture that is as approved to the eye
# is written down as it was approved, so that nothing changes without need.
echo "Drawing"
draw() {
    "$program" "$@" --gtest_brief=1 >"$out/log" 2>&1
}
draw || true
draw --scale=2 --gtest_filter='EveryScale/*' || true
{ draw --record="$drawn" && draw --scale=2 --gtest_filter='EveryScale/*' --record="$drawn"; } || {
    cat "$out/log" >&2
    exit 1
}

files() { (cd "$1" && find texts baselines -type f 2>/dev/null | LC_ALL=C sort); }
mapfile -t now < <(files "$drawn")
mapfile -t before < <(files "$golden")
changed=()
count=0
for file in "${now[@]}"; do
    if [[ ! -e $golden/$file ]]; then
        echo "new      $file"
    elif ! cmp -s "$drawn/$file" "$golden/$file"; then
        echo "changed  $file"
        if [[ $file == *.png ]]; then changed+=("$file"); fi
    else
        continue
    fi
    count=$((count + 1))
done
for file in "${before[@]}"; do
    if [[ ! -e $drawn/$file ]]; then
        echo "gone     $file"
        count=$((count + 1))
    fi
done
echo "$count of ${#now[@]} files differ from what was approved"

# The sheets. Without the program that makes them there are still the files.
sheet() { # FILE TITLE argument for montage...
    local file=$1 title=$2
    shift 2
    montage -background '#808890' -fill white -font DejaVu-Sans -title "$title" "$@" "$file"
    echo "see      ${file#"$PWD"/}" | sed "s/\.png$/*&/"
}
if command -v montage >/dev/null; then
    for folder in "$drawn"/baselines/*/; do
        name=$(basename "$folder")
        sheet "$out/all-$name.png" "$name" -label '%t' -tile 3x3 -geometry '620x420>+8+8' "$folder"*.png
    done
    rows=()
    for file in "${changed[@]}"; do
        rows+=(-label "${file#baselines/}" "$golden/$file" -label drawn "$drawn/$file"
            -label difference "$evidence/${file%.png}.diff.png")
    done
    if ((${#rows[@]} > 0)); then
        sheet "$out/changed.png" changed -tile 3x3 -geometry '620x420>+8+8' "${rows[@]}"
    fi
else
    echo "no sheets: there is no montage here (package imagemagick)"
fi

if [[ $approve == yes ]]; then
    rm -rf "$golden/texts" "$golden/baselines"
    cp -r "$drawn/texts" "$drawn/baselines" "$golden/"
    chmod -R u=rwX,go=rX "$golden/texts" "$golden/baselines"
    echo "approved; $(du -sk --apparent-size "$golden/baselines" | cut -f1) KiB of pictures"
fi
