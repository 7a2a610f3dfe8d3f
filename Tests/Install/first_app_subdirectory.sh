# Builds first-app with the source tree as a subfolder, as fast as possible: the library is compiled once more.
source "$(dirname "$0")/common.sh"
folder=$WORK/subdirectory
mkdir -p "$folder"
export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime CCACHE_COMPILERCHECK=content
export CCACHE_BASEDIR=$SOURCE CCACHE_NOHASHDIR=1
"$CMAKE" -S "$SOURCE/Examples/first-app" -B "$folder" -G Ninja -DVORLANE_SOURCE_DIR="$SOURCE" -DCMAKE_CXX_COMPILER="$CXX" \
    -DCMAKE_CXX_COMPILER_LAUNCHER="$LAUNCHER" -DCMAKE_CXX_FLAGS=-O0 -DCMAKE_UNITY_BUILD=ON
"$CMAKE" --build "$folder" -j 2
objdump -p "$folder/first-app" | grep -q "NEEDED.*libvorlane.so" || fail "the default is not the shared library"
check_first_app "$folder/first-app" subdirectory
