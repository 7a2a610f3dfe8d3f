# A host with another version of nlohmann/json is refused by find_package, by pkg-config and by the compiler, and learns what
# to do. It would not link: the version is part of the library's exported signatures.
source "$(dirname "$0")/common.sh"
folder=$(fresh_folder json-version)
other=3.99.1

# A copy of nlohmann/json that claims to be another version.
headers=$(echo '#include <nlohmann/json.hpp>' | "$CXX" -std=c++20 -x c++ -M - | grep -oE '[^ ]+/nlohmann/json\.hpp' | sort -u)
mkdir -p "$folder/include" "$folder/pkgconfig"
cp -r "$(dirname "$headers")" "$folder/include/"
sed -i -E 's/(define NLOHMANN_JSON_VERSION_MINOR) [0-9]+/\1 99/; s/(define NLOHMANN_JSON_VERSION_PATCH) [0-9]+/\1 1/' \
    "$folder/include/nlohmann/detail/abi_macros.hpp"
cat >"$folder/nlohmann_jsonConfig.cmake" <<CMAKE
add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
CMAKE
cat >"$folder/nlohmann_jsonConfigVersion.cmake" <<CMAKE
set(PACKAGE_VERSION $other)
set(PACKAGE_VERSION_COMPATIBLE TRUE)
CMAKE
printf 'Name: nlohmann_json\nDescription: another version\nVersion: %s\n' "$other" >"$folder/pkgconfig/nlohmann_json.pc"

configure() {
    "$CMAKE" -S "$here/simulator-consumer" -B "$folder/build" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$CXX" \
        -DKIND=shared "$@" >"$folder/log" 2>&1
}
configure || fail "the library's own version was refused: $(cat "$folder/log")"
rm -r "$folder/build"
! configure -Dnlohmann_json_DIR="$folder" || fail "find_package accepted version $other"
# CMake wraps the lines of a message.
message=$(tr -s ' \n' ' ' <"$folder/log")
[[ $message == *"built with nlohmann_json $JSON_VERSION, but version $other was found"*"Set nlohmann_json_DIR"* ]] ||
    fail "the message does not say what to do: $message"

export PKG_CONFIG_PATH=$folder/pkgconfig:$prefix/$LIBDIR/pkgconfig
! pkg-config --exists vorlane || fail "pkg-config accepted version $other"
[[ $(pkg-config --print-errors --exists vorlane 2>&1 || true) == *"nlohmann_json = $JSON_VERSION"* ]] ||
    fail "pkg-config does not name the version that is needed"

compile() {
    echo '#include <vorlane/VLTypes.h>' | "$CXX" -std=c++20 -fsyntax-only "$@" -I"$prefix/include" -x c++ - 2>"$folder/log"
}
compile || fail "the library's own version does not compile: $(cat "$folder/log")"
! compile -I"$folder/include" || fail "the compiler accepted version $other"
grep -q "built with another version of nlohmann/json" "$folder/log" || fail "no reason was given: $(cat "$folder/log")"
! compile -DJSON_DIAGNOSTICS=1 || fail "the compiler accepted JSON_DIAGNOSTICS"
grep -q "leave it off" "$folder/log" || fail "no reason was given: $(cat "$folder/log")"
