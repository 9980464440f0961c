#!/bin/sh
# Writes a small photometric web file into a scratch folder, and runs photometric_web on it as a user
# whose locale has a decimal comma: photometric_web.sh PROGRAM SCRATCH
set -eu
program=$(cd "$(dirname "$1")" && pwd)/$(basename "$1")
scratch=$(mkdir -p "$2" && cd "$2" && pwd)

# A spot light, in three planes over a quarter of the circle. The other quarters mirror it.
mkdir -p "$scratch/webs" "$scratch/registry"
sed 's/$/\r/' >"$scratch/webs/spot.ies" <<'END'
IESNA:LM-63-2002
[TEST] a file of this example
[LUMINAIRE] Spot light
TILT=NONE
1 1000 1.25 7 3 1 2 0.1 0.1 0.05
1.0 1.0 12.5
0 15 30 45 60
75 90
0 45 90
1203.25 987.5 402.75 110.5 20.25 1.5 0
1203.25 975.0 398.5 107.25 19.5 1.25 0
1203.25 962.25 391.0 104.75 18.75 1.0 0
END

export VX_REGISTRY_DIR="$scratch/registry"
export ZOR_IES_PATH="$scratch/nowhere;$scratch/webs"
LC_ALL=de_DE.UTF-8 "$program" spot.ies
