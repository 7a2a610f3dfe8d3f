# Sourced by the scripts of this folder.
set -euo pipefail

prefix=$WORK/prefix
here=$(dirname "${BASH_SOURCE[0]}")

fail() { echo "$*" >&2; exit 1; }

# Creates an empty folder and prints its path.
fresh_folder() {
    rm -rf "${WORK:?}/$1"
    mkdir -p "$WORK/$1"
    echo "$WORK/$1"
}

# Runs a first-app against a local service, and checks what the service has stored afterwards.
check_first_app() {
    local program=$1 folder line origin
    folder=$(fresh_folder "run-$2")
    coproc LOCAL_SERVICE { exec "$SERVICE" 2>"$folder/service-errors"; }
    trap "kill $LOCAL_SERVICE_PID 2>/dev/null || true" EXIT
    read -r -t 30 line <&"${LOCAL_SERVICE[0]}" || fail "the service did not start: $(cat "$folder/service-errors")"
    [[ $line == "listening on http://"* ]] || fail "the service printed: $line"
    origin=${line#listening on }

    XDG_DATA_HOME=$folder/data VORLANE_SERVICE_ORIGIN=$origin timeout 60 "$program" \
        >"$folder/output" 2>"$folder/errors" || fail "first-app failed: $(cat "$folder/output" "$folder/errors")"

    grep -qx "tag: set" "$folder/output" || fail "first-app printed: $(cat "$folder/output")"
    check_stored events '"type":"Purchase"'
    check_stored events '"label":"Coffee"'
    check_stored tags '"name":"favourite_drink"'
    check_stored sessions '"kind":"start"'
    check_stored sessions '"kind":"end"'
}

# The records of a kind at the service contain a string.
check_stored() {
    local stored
    stored=$(curl --silent --show-error --fail --max-time 30 "$origin/_admin/$1")
    grep -qF "$2" <<<"$stored" || fail "no $2 in the service's $1: $stored"
}
