#!/usr/bin/env bash
# Lives through an application's day against a local service, and prints what was sent and what was stored.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
Scripts/setup
mkdir -p build
log=build/demo-build.log
echo "Building (see $log) ..."
if ! { cmake --preset debug && cmake --build build/debug --target vorlane-demo; } >"$log" 2>&1; then
    cat "$log"
    exit 1
fi
tools=build/debug/Simulator
exec "$tools/Demo/vorlane-demo" "$tools/Phone/vorlane-phone" "$tools/Service/vorlane-service"
