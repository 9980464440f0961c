#!/bin/sh
# Sets up search paths in a scratch folder (an environment list, and registry files for the user and
# the machine) and runs find_texture on them: find_texture.sh PROGRAM SCRATCH
set -eu
program=$(cd "$(dirname "$1")" && pwd)/$(basename "$1")
scratch=$(mkdir -p "$2" && cd "$2" && pwd)
samples=$(cd "$(dirname "$0")/../tests/data/samples" && pwd)

mkdir -p "$scratch/project/stone" "$scratch/machine" "$scratch/user" "$scratch/registry" "$scratch/out"
cp "$samples/netpbm_text_61x44x1_2B_rle.sgi" "$scratch/project/stone/slate.sgi"
cp "$samples/imagemagick_gradient_61x37x3_1B_verbatim.sgi" "$scratch/machine/sky.sgi"
cp "$samples/ffmpeg_text_61x44x3_1B_rle.sgi" "$scratch/user/poster.sgi"
cp "$samples/netpbm_flat_64x64x3_1B_rle.sgi" "$scratch/user/sky.sgi" # hidden by the machine's

# write_registry FILE ROOT DIRECTORY: writes a registry file as a person would
write_registry() {
    cat >"$1" <<END
REGEDIT4

[$2\\Software\\Meridane\\Vandermire\\Texture Paths]
"0"="$3"
END
}
write_registry "$scratch/registry/machine.reg" HKEY_LOCAL_MACHINE '%SCENE_ROOT%\\machine\\'
write_registry "$scratch/registry/user.reg" HKEY_CURRENT_USER "$scratch/user"

export VX_REGISTRY_DIR="$scratch/registry"
export SCENE_ROOT="$scratch"
export ZOR_TEXTURE_PATH="$scratch/nowhere;$scratch/project"
cd "$scratch/out"
"$program" 'stone/slate.sgi' sky.sgi poster.sgi
