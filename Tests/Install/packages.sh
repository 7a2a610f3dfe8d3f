# Builds the Debian packages, and checks their fields and files.
source "$(dirname "$0")/common.sh"
folder=$(fresh_folder packages)
"$CPACK" --config "$BUILD/CPackConfig.cmake" -G DEB -B "$folder" >"$folder/log" || fail "$(cat "$folder/log")"
architecture=$(dpkg --print-architecture)
runtime=$folder/libvorlane_${VERSION}_$architecture.deb
development=$folder/libvorlane-dev_${VERSION}_$architecture.deb
[[ -f $runtime && -f $development ]] || fail "$(ls "$folder")"

field() { dpkg-deb --field "$1" "$2"; }
[[ $(field "$runtime" Package) == libvorlane ]]
[[ $(field "$development" Package) == libvorlane-dev ]]
for package in libcurl4 libfmt9 libplist3 libuuid1 libsystemd0 libssl3 libpng16-16 libturbojpeg0 libwebp7 libc6; do
    [[ " $(field "$runtime" Depends)," =~ " $package"[,\ ] ]] || fail "libvorlane does not depend on $package"
done
for package in "libvorlane (= $VERSION)" "nlohmann-json3-dev (>= $JSON_VERSION)" libcurl4-openssl-dev libsqlite3-dev libplist-dev; do
    [[ " $(field "$development" Depends)," == *" $package,"* ]] || fail "libvorlane-dev does not depend on $package"
done

dpkg-deb --info "$runtime" shlibs | grep -x "libvorlane ${VERSION%%.*} libvorlane (>= $VERSION)" >/dev/null ||
    fail "libvorlane has no shlibs entry for its dependants"

dpkg-deb --extract "$runtime" "$folder/runtime"
dpkg-deb --extract "$development" "$folder/development"
files() { (cd "$folder/$1" && find . ! -type d -printf '%P\n' | sort); }
libraries=usr/$LIBDIR
[[ $(files runtime) == "$(printf '%s\n' "$libraries/libvorlane.so.${VERSION%%.*}" "$libraries/libvorlane.so.$VERSION")" ]] ||
    fail "libvorlane holds: $(files runtime)"
for file in "$libraries/libvorlane.so" "$libraries/libvorlane.a" "$libraries/libvorlane_simulator.a" \
    "$libraries/pkgconfig/vorlane.pc" "$libraries/cmake/Vorlane/VorlaneConfig.cmake" usr/include/vorlane/Vorlane.h; do
    files development | grep -x "$file" >/dev/null || fail "libvorlane-dev lacks $file"
done
! files development | grep -vE '^usr/(include/vorlane|lib)/' >/dev/null || fail "libvorlane-dev holds: $(files development)"
! "$NM" "$folder/runtime/$libraries/libvorlane.so.$VERSION" 2>/dev/null | grep . >/dev/null || fail "the packed library is not stripped"

# Both unpacked together work like an installation.
cp -a "$folder/runtime/usr" "$folder/development/"
root=$folder/development/usr
export PKG_CONFIG_PATH=$root/$LIBDIR/pkgconfig
read -ra options <<<"$(pkg-config --cflags --libs vorlane)"
"$CXX" -std=c++20 "$SOURCE/Examples/first-app/main.cpp" -o "$folder/first-app" "${options[@]}" "-Wl,-rpath,$root/$LIBDIR"
check_first_app "$folder/first-app" packages
