#!/bin/bash
# Checks everything: format, clang-tidy, and the tests in a debug build and under the sanitizers.
#
#   ./test.sh                      all of it
#   ./test.sh debug                one part, or several: format tidy debug asan tsan
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")" || exit 1

jobs=$(nproc)
logs=build/test-logs
summary=()
failed=0

export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
export TSAN_OPTIONS=halt_on_error=1:atexit_sleep_ms=0:second_deadlock_stack=1:suppressions=$PWD/Scripts/tsan.supp

sources() {
    find Source Simulator Tests Benchmarks Examples \( -name '*.cpp' -o -name '*.h' \) -print0
}

# Runs a part, and notes its time and whether it held.
part() {
    local name=$1 start=$SECONDS
    shift
    printf '\n=== %s\n' "$name"
    if "$@"; then
        summary+=("$(printf '%-8s passed   %4d s' "$name" $((SECONDS - start)))")
    else
        summary+=("$(printf '%-8s FAILED   %4d s' "$name" $((SECONDS - start)))")
        failed=1
    fi
}

check_format() {
    sources | xargs -0 -n 20 -P "$jobs" clang-format --dry-run -Werror
}

run_suite() {
    local preset=$1 start=$SECONDS
    cmake --preset "$preset" >"$logs/$preset-configure.log" || { cat "$logs/$preset-configure.log"; return 1; }
    cmake --build --preset "$preset" || return 1
    echo "built in $((SECONDS - start)) s"
    ctest --preset "$preset" -j "$jobs" 2>&1 | tee "$logs/$preset-ctest.log"
}

# ctest's own closing lines, which begin with the share of tests that passed.
closing_lines() { sed -n '/tests passed, .* out of/,$p' "$logs/$1-ctest.log"; }

Scripts/setup || exit 1
mkdir -p "$logs"
rm -f "$logs"/*
wanted=("$@")
[[ ${#wanted[@]} -gt 0 ]] || wanted=(format tidy debug asan tsan)
for name in "${wanted[@]}"; do
    case $name in
        format) part "$name" check_format ;;
        tidy) part "$name" Scripts/tidy ;;
        debug | asan | tsan) part "$name" run_suite "$name" ;;
        *) echo "test.sh: no part is called '$name'" >&2; exit 2 ;;
    esac
done

for name in "${wanted[@]}"; do
    [[ -f $logs/$name-ctest.log ]] || continue
    printf '\n--- tests, %s\n' "$name"
    closing_lines "$name"
done
printf '\n'
printf '%s\n' "${summary[@]}" "all      $SECONDS s"
exit "$failed"
