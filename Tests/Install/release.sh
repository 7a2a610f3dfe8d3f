# Builds and installs the release as the preset "package" does, and links first-app with its archive. The archive holds no
# intermediate code of this compiler, which a host's linker of another version could not read.
source "$(dirname "$0")/common.sh"
folder=$WORK/release
mkdir -p "$folder"
export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime CCACHE_COMPILERCHECK=content
export CCACHE_BASEDIR=$SOURCE CCACHE_NOHASHDIR=1
(cd "$SOURCE" && "$CMAKE" --preset package -B "$folder/build" -DCMAKE_CXX_COMPILER="$CXX")
"$CMAKE" --build "$folder/build" -j 2
rm -rf "$folder/prefix"
"$CMAKE" --install "$folder/build" --prefix "$folder/prefix" >"$folder/install.log"

archive=$folder/prefix/$LIBDIR/libvorlane.a
sections=$(objdump -h "$archive")
grep -qF .text <<<"$sections" || fail "the archive has no code"
! grep -F .gnu.lto_ <<<"$sections" || fail "the archive has intermediate code"
! nm "$archive" | grep -F __gnu_lto_ || fail "the archive has a mark of intermediate code"

"$CMAKE" -S "$SOURCE/Examples/first-app" -B "$folder/first-app" -DCMAKE_PREFIX_PATH="$folder/prefix" -DBUILD_SHARED_LIBS=OFF \
    -DCMAKE_CXX_COMPILER="$CXX"
"$CMAKE" --build "$folder/first-app"
check_first_app "$folder/first-app/first-app" release
