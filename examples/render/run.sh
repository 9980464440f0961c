#!/bin/sh
# Makes textures, sets up search paths of its own, and renders the scene:
# run.sh PROGRAM FOLDER [WIDTH HEIGHT]. make_textures has to be beside the program. Leaves textures and
# pictures in the folder, as image files and, if netpbm is installed, as PNG.
set -eu
program=$(cd "$(dirname "$1")" && pwd)/$(basename "$1")
mkdir -p "$2"
folder=$(cd "$2" && pwd)
here=$(cd "$(dirname "$0")" && pwd)
width=${3:-480}
height=${4:-320}

mkdir -p "$folder/project/wall" "$folder/project/floor" "$folder/registry"
export VX_REGISTRY_DIR="$folder/registry" # the user's settings are neither used nor changed
export ZOR_TEXTURE_PATH="$folder/nowhere;$folder/project"
export ZOR_IES_PATH="$folder/project/webs;$here/webs" # your own webs: sconce*.ies, pendant*.ies

"$(dirname "$program")/make_textures" "$folder/project"
"$program" "$width" "$height" "$folder"

command -v pnmtopng >/dev/null || {
    echo "$folder/antialiased.sgi is the picture. For a PNG of it, install the package netpbm." >&2
    exit 0
}

# PNG files are made in a folder of their own, and moved when all are complete.
work=$(mktemp -d "$folder/work.XXXXXX")
trap 'rm -r "$work"' EXIT
trap 'exit 1' HUP INT TERM
cd "$work"

# side_by_side OUTPUT COMMAND...: filters both pictures by a command and joins them as PNG
side_by_side() {
    output=$1
    shift
    for picture in plain antialiased; do
        "$@" <"$picture.ppm" >"$picture.part"
    done
    pnmcat -lr plain.part antialiased.part | pnmtopng -quiet >"$output"
}

for picture in plain antialiased; do
    sgitopnm -quiet "$folder/$picture.sgi" >"$picture.ppm"
    pnmtopng -quiet "$picture.ppm" >"$picture.png"
done
side_by_side side_by_side.png cat
# The mirror, where the difference is largest.
closeup() {
    pamcut -left $((width * 12 / 100)) -top $((height * 42 / 100)) \
        -width $((width * 32 / 100)) -height $((height * 45 / 100)) | pamenlarge 3
}
side_by_side closeup.png closeup
mv ./*.png "$folder"
echo "$folder/antialiased.png, and next to the picture without antialiasing: side_by_side.png, closeup.png"
