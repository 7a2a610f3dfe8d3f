# The sources repeat the project's version.
source "$(dirname "$0")/common.sh"
for place in 'kLibraryVersion = "' 'kUserAgent = "Vorlane/'; do
    grep -rqF "$place$VERSION\"" "$SOURCE/Source" --include='*.cpp' || fail "no source has $place$VERSION\""
done
grep -qE "^## $VERSION( |$)" "$SOURCE/CHANGELOG.md" || fail "CHANGELOG.md has no section $VERSION"
