# The shared library exports names of namespace vorlane only, and is known by its major version.
source "$(dirname "$0")/common.sh"
exported=$("$NM" --dynamic --demangle --defined-only "$LIBRARY" | cut -d ' ' -f 2-)
grep -q ' vorlane::Vorlane::initialiseSDKWithApplication(' <<<"$exported" || fail "the facade is not exported"
strangers=$(grep -vE '^[A-Za-z] ((typeinfo( name)?|vtable|VTT|guard variable) for |(non-)?virtual thunk to )?vorlane::|^A VORLANE_2$' \
    <<<"$exported" || true)
[[ -z $strangers ]] || fail "exported without need: $strangers"
# Read to its end: a pipe that closes early fails its writer.
objdump -p "$LIBRARY" | grep -E "SONAME +libvorlane\.so\.${VERSION%%.*}$" >/dev/null || fail "the soname is another one"
