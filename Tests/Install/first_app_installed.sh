# Builds first-app against the installation with find_package. Argument: static, shared, or default.
source "$(dirname "$0")/common.sh"
kind=$1
folder=$(fresh_folder "installed-$kind")
ask=()
case $kind in
    static) ask=(-DBUILD_SHARED_LIBS=OFF) ;;
    shared) ask=(-DBUILD_SHARED_LIBS=ON) ;;
esac
"$CMAKE" -S "$SOURCE/Examples/first-app" -B "$folder" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$CXX" "${ask[@]}"
"$CMAKE" --build "$folder"
needed=$(objdump -p "$folder/first-app" | grep NEEDED)
if [[ $kind == static ]]; then
    ! grep -q libvorlane <<<"$needed" || fail "the static library was asked for: $needed"
else
    grep -q "libvorlane.so.${VERSION%%.*}" <<<"$needed" || fail "the shared library was asked for: $needed"
fi
check_first_app "$folder/first-app" "installed-$kind"
