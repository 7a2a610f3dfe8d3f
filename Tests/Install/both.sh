# find_package fails for the static and the shared library at once, and for an unknown component.
source "$(dirname "$0")/common.sh"
folder=$(fresh_folder both)
configure() {
    "$CMAKE" -S "$here/simulator-consumer" -B "$folder/build" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$CXX" \
        -DKIND="$1" >"$folder/log" 2>&1
}
! configure "static;shared" || fail "both libraries were found at once"
grep -q "not for both" "$folder/log" || fail "there is no reason in the log: $(cat "$folder/log")"
! configure "static;wireless" || fail "an unknown component was found"
configure static || fail "the static library alone was not found: $(cat "$folder/log")"
