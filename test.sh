#!/bin/bash
# Runs the project's checks.
#
#   ./test.sh                      every test, in one debug build
#   ./test.sh all                  every part of the table below
#   ./test.sh PART…                these parts
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")" || exit 1

# The parts in their order: name, the parts of Scripts/setup that it needs, command.
parts=(
    "format   format   check_format"
    "debug    core     run_tests debug --label-exclude install"
    "install  install  run_tests debug --label-regex install"
    "tidy     tidy,benchmarks Scripts/tidy"
    "asan     core     run_tests asan"
    "tsan     core     run_tests tsan"
)

jobs=$(nproc)
logs=build/test-logs
summary=()
failed=0

export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
export TSAN_OPTIONS=halt_on_error=1:atexit_sleep_ms=0:second_deadlock_stack=1:suppressions=$PWD/Scripts/tsan.supp

check_format() {
    find Source Simulator Tests Benchmarks Examples \( -name '*.cpp' -o -name '*.h' \) -print0 |
        xargs -0 -n 20 -P "$jobs" clang-format --dry-run -Werror
}

# Builds a preset and runs those of its tests that the further arguments select.
run_tests() {
    local preset=$1 start=$SECONDS
    shift
    cmake --preset "$preset" >"$logs/$part-configure.log" || { cat "$logs/$part-configure.log"; return 1; }
    cmake --build --preset "$preset" || return 1
    echo "built in $((SECONDS - start)) s"
    ctest --preset "$preset" -j "$jobs" "$@" 2>&1 | tee "$logs/$part-ctest.log"
}

# Runs a part, and records its time and result.
run_part() {
    local part=$1 setup=$2 start=$SECONDS result=passed
    shift 2
    printf '\n=== %s\n' "$part"
    # shellcheck disable=SC2086 # a part may need several parts of the set-up
    Scripts/setup ${setup//,/ } && "$@" || result=FAILED failed=1
    summary+=("$(printf '%-8s %s %6d s' "$part" "$result" $((SECONDS - start)))")
}

names() { for row in "${parts[@]}"; do echo "${row%% *}"; done; }

wanted=("$@")
[[ ${#wanted[@]} -gt 0 ]] || wanted=(debug)
[[ ${wanted[*]} != all ]] || mapfile -t wanted < <(names)
for name in "${wanted[@]}"; do
    names | grep -qx -e "$name" || { echo "test.sh: no part is called '$name'; there are: all $(names | xargs)" >&2; exit 2; }
done

mkdir -p "$logs"
rm -f "$logs"/*
for name in "${wanted[@]}"; do
    for row in "${parts[@]}"; do
        # shellcheck disable=SC2086 # the row's words
        [[ ${row%% *} != "$name" ]] || run_part $row
    done
done

# The closing lines of each ctest run, from the share of tests that passed on.
for name in "${wanted[@]}"; do
    [[ -f $logs/$name-ctest.log ]] || continue
    printf '\n--- tests, %s\n' "$name"
    sed -n '/tests passed, .* out of/,$p' "$logs/$name-ctest.log"
done
printf '\n'
printf '%s\n' "${summary[@]}" "all      $SECONDS s"
exit "$failed"
