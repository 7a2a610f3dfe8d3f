# Builds a host's test against the installed simulated phone. Argument: static or shared.
source "$(dirname "$0")/common.sh"
folder=$(fresh_folder "simulator-$1")
"$CMAKE" -S "$here/simulator-consumer" -B "$folder" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$CXX" \
    -DKIND="$1"
"$CMAKE" --build "$folder"
timeout 60 "$folder/host-test"
