# Builds first-app with the source tree as a subfolder: the whole library once more, as cheaply as may be.
source "$(dirname "$0")/common.sh"
folder=$WORK/subdirectory
mkdir -p "$folder"
export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime CCACHE_COMPILERCHECK=content
export CCACHE_BASEDIR=$SOURCE CCACHE_NOHASHDIR=1
"$CMAKE" -S "$SOURCE/Examples/first-app" -B "$folder" -G Ninja -DVORLANE_SOURCE_DIR="$SOURCE" -DCMAKE_CXX_COMPILER="$CXX" \
    -DCMAKE_CXX_COMPILER_LAUNCHER="$LAUNCHER" -DCMAKE_CXX_FLAGS=-O0
"$CMAKE" --build "$folder" -j 2
check_first_app "$folder/first-app" subdirectory
