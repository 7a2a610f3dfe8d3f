# Installs the build tree for this test and the tests that need it.
source "$(dirname "$0")/common.sh"
fresh_folder prefix >/dev/null
"$CMAKE" --install "$BUILD" --prefix "$prefix" >"$WORK/install.log"
for file in "include/vorlane/Vorlane.h" "include/vorlane/Platform/Linux/LinuxPlatform.h" \
    "include/vorlane/Simulator/Platform/SimulatedPhone.h" "$LIBDIR/libvorlane.a" "$LIBDIR/libvorlane_simulator.a" \
    "$LIBDIR/libvorlane.so" "$LIBDIR/libvorlane.so.${VERSION%%.*}" "$LIBDIR/libvorlane.so.$VERSION" \
    "$LIBDIR/pkgconfig/vorlane.pc" "$LIBDIR/cmake/Vorlane/VorlaneConfig.cmake"; do
    [[ -f $prefix/$file ]] || fail "$file was not installed"
done
[[ ! -e $prefix/include/vorlane/Platform/ProcessWide.h ]] || fail "an internal header was installed"
! grep -rlF -e "$SOURCE/" -e "$BUILD/" "$prefix/include" "$prefix/$LIBDIR/cmake" "$prefix/$LIBDIR/pkgconfig" ||
    fail "an installed file names the folder it was built in"
