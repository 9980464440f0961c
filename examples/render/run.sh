#!/bin/sh
# Makes textures, sets up search paths of its own, and renders the scene:
# run.sh PROGRAM FOLDER [WIDTH HEIGHT]. Textures and pictures are in the folder afterwards, as image
# files and, where netpbm is installed, as PNG. make_textures lies beside the program.
set -eu
program=$(cd "$(dirname "$1")" && pwd)/$(basename "$1")
mkdir -p "$2"
folder=$(cd "$2" && pwd)
here=$(cd "$(dirname "$0")" && pwd)

mkdir -p "$folder/project/wall" "$folder/project/floor" "$folder/registry"
export VX_REGISTRY_DIR="$folder/registry" # nothing of the user's settings is used or changed
export ZOR_TEXTURE_PATH="$folder/nowhere;$folder/project"
export ZOR_IES_PATH="$here/webs"

"$(dirname "$program")/make_textures" "$folder/project"
"$program" "${3:-480}" "${4:-320}" "$folder"

if command -v sgitopnm >/dev/null && command -v pnmtopng >/dev/null; then
    for picture in plain antialiased; do
        sgitopnm "$folder/$picture.sgi" 2>/dev/null >"$folder/$picture.ppm"
        pnmtopng "$folder/$picture.ppm" 2>/dev/null >"$folder/$picture.png"
    done
    pnmcat -lr "$folder/plain.ppm" "$folder/antialiased.ppm" | pnmtopng 2>/dev/null >"$folder/side_by_side.png"
    rm "$folder/plain.ppm" "$folder/antialiased.ppm"
    echo "$folder/side_by_side.png"
fi
