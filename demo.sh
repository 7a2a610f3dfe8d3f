#!/usr/bin/env bash
# Plays a day of an application against a local service, and prints what was sent and stored.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
Scripts/setup
mkdir -p build
log=build/demo-build.log
echo "Building (see $log) ..."
if ! { cmake --preset demo && cmake --build build/demo --target vorlane-demo; } >"$log" 2>&1; then
    cat "$log"
    exit 1
fi
tools=build/demo/Simulator
exec "$tools/Demo/vorlane-demo" "$tools/Phone/vorlane-phone" "$tools/Service/vorlane-service"
