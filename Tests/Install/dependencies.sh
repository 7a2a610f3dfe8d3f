# Scripts/dependencies agrees with the packages and modules that it names, and with the libraries that were linked.
source "$(dirname "$0")/common.sh"
needed=$(objdump -p "$LIBRARY" | sed -n 's/^ *NEEDED *//p' | grep -vE '^(lib(c|m|gcc_s|stdc\+\+|[alt]san|ubsan)|ld-linux.*)\.so')
rows=$(grep -v '^#' "$SOURCE/Scripts/dependencies")
[[ -n $rows ]] || fail "the table is empty"

# A library that is loaded when first used is named in the sources and not linked.
check_loaded() {
    local file
    pkg-config --exists "${2#headers:}" || fail "pkg-config does not know ${2#headers:}"
    for file in $(dpkg-query --listfiles "$3" | sed -n 's#.*/\(lib[^/]*\.so\.[0-9]*\)$#\1#p'); do
        if grep -rqF "\"$file\"" "$SOURCE/Source"; then return; fi
    done
    fail "no source loads a library of $3"
}

while read -r package finder _ option; do
    if [[ $finder == headers:* ]]; then
        check_loaded "$package" "$finder" "$option"
        continue
    fi
    [[ " $(dpkg-query --listfiles "$package" | xargs) " == *"/lib${option#-l}.so "* ]] || fail "$package has no lib${option#-l}.so"
    if [[ $finder == module:* ]]; then
        [[ " $(pkg-config --libs "${finder#module:}") " == *" $option "* ]] || fail "${finder#module:} has no $option"
    fi
    grep -qE "^lib${option#-l}[-0-9.]*\.so" <<<"$needed" || fail "the library is not linked with $option"
    needed=$(grep -vE "^lib${option#-l}[-0-9.]*\.so" <<<"$needed" || true)
    grep -qE "^Libs.private:.* $option( |$)" "$BUILD/vorlane.pc" || fail "vorlane.pc has no $option"
    grep -qE "[ ;:](${finder#*:})[); ]" "$BUILD/VorlaneConfig.cmake" || fail "VorlaneConfig.cmake does not look for ${finder#*:}"
done <<<"$rows"
[[ -z $needed ]] || fail "linked, but not in the table: $needed"

# The image decoders are loaded at run time: the package depends on those that hold them.
decoders=$(sed -n 's/.*VLSharedLibrary library("\([^"]*\)").*/\1/p' "$SOURCE"/Source/Inbox/*Decoder.cpp)
[[ $(wc -w <<<"$decoders") == 3 ]] || fail "three decoders were expected: $decoders"
depends=$(sed -n 's/^set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "\(.*\)")$/\1/p' "$BUILD/CPackConfig.cmake")
for decoder in $decoders; do
    package=$(dpkg-query --search "*/$decoder" | sed 's/:.*//' | sort -u)
    grep -qE "(^|, )$package(,|$)" <<<"$depends" || fail "the package does not depend on $package, which holds $decoder"
done
