# Shared by the scripts of this folder; to be sourced.
set -euo pipefail

prefix=$WORK/prefix
here=$(dirname "${BASH_SOURCE[0]}")

fail() { echo "$*" >&2; exit 1; }

# An empty folder of this test's own.
fresh_folder() {
    rm -rf "${WORK:?}/$1"
    mkdir -p "$WORK/$1"
    echo "$WORK/$1"
}

# Runs a first-app against a local service, and checks what the service was told.
check_first_app() {
    local program=$1 folder line
    folder=$(fresh_folder "run-$2")
    coproc SERVICE { exec "$PYTHON" "$here/recording_service.py" "$folder/requests" 2>"$folder/service-errors"; }
    local service=$SERVICE_PID
    trap "kill $service 2>/dev/null || true" EXIT
    read -r -t 30 line <&"${SERVICE[0]}" || fail "the service did not start: $(cat "$folder/service-errors")"
    [[ $line == "listening on http://"* ]] || fail "the service says: $line"

    XDG_DATA_HOME=$folder/data VORLANE_SERVICE_ORIGIN=${line#listening on } timeout 60 "$program" \
        >"$folder/output" 2>"$folder/errors" || fail "first-app failed: $(cat "$folder/output" "$folder/errors")"

    grep -qx "tag: set" "$folder/output" || fail "first-app says: $(cat "$folder/output")"
    for expected in "POST /0.8/register_app_event?" '"event_type":"Purchase"' '"event_label":"Coffee"' favourite_drink; do
        grep -qF "$expected" "$folder/requests" || fail "no '$expected' in: $(cat "$folder/requests")"
    done
}
