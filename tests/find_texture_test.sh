#!/bin/sh
# Runs an example, and compares its copies with the bytes that they have on every machine:
# find_texture_test.sh FIND_TEXTURE.SH PROGRAM FOLDER
set -eu
sums=$(cd "$(dirname "$0")/data" && pwd)/find_texture.sha256
rm -rf "$3" # an earlier run may have left copies
"$1" "$2" "$3"
cd "$3/out"
sha256sum --check --quiet "$sums"
