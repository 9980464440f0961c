#!/bin/sh
# The example scene, drawn the right way up, and what the program reports if textures are missing:
# render_test.sh PROGRAM RUN.SH FOLDER
set -eu
rm -rf "$3"
mkdir -p "$3/none"
webs=$(dirname "$2")/webs
if ZOR_TEXTURE_PATH="$3/none" ZOR_IES_PATH="$webs" "$1" 8 8 "$3/none" 2>"$3/messages"; then exit 1; fi
grep -q 'no texture wall/bricks.sgi' "$3/messages"
rmdir "$3/none" # nothing was drawn

"$2" "$1" "$3" 60 40
command -v sgitopnm >/dev/null || exit 0
picture=$3/picture.ppm
sgitopnm -quiet "$3/antialiased.sgi" >"$picture"
# pixel LEFT TOP CONDITION: on red, green and blue
pixel() {
    pamcut -left "$1" -top "$2" -width 1 -height 1 "$picture" | pnmtoplainpnm |
        tail -n 1 | awk "{ r = \$1; g = \$2; b = \$3; exit !($3) }"
}
pixel 31 8 'r > 2 * b'        # the sun of the poster is up and to the right,
pixel 31 16 'r < 40'          # its hills are below
pixel 15 19 '10 * r < 13 * b' # the mirror shows the plaster,
pixel 4 19 '2 * r > 3 * b'    # to its left are bricks
