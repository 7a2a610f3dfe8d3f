# Builds first-app against the installation with pkg-config. Argument: static or shared.
source "$(dirname "$0")/common.sh"
kind=$1
folder=$(fresh_folder "pkg-config-$kind")
export PKG_CONFIG_PATH=$prefix/$LIBDIR/pkgconfig
[[ $(pkg-config --modversion vorlane) == "$VERSION" ]] || fail "pkg-config reports another version"
read -ra compile <<<"$(pkg-config --cflags vorlane)"
if [[ $kind == static ]]; then
    read -ra link <<<"$(pkg-config --static --libs vorlane)"
    link=("${link[@]/#-lvorlane/-l:libvorlane.a}")
else
    read -ra link <<<"$(pkg-config --libs vorlane)"
    link+=("-Wl,-rpath,$prefix/$LIBDIR")
fi
"$CXX" -std=c++20 "${compile[@]}" "$SOURCE/Examples/first-app/main.cpp" -o "$folder/first-app" "${link[@]}"
check_first_app "$folder/first-app" "pkg-config-$kind"
