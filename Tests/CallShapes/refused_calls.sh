# Checks that each call in a file is refused by the compiler. Arguments: compiler, include folder, file of calls, work folder.
#
# All calls are compiled at once, each in a function on a line of its own: a call is refused if the compiler reports an error
# on its line. A call that is accepted stands in front of them and must have no error.
set -euo pipefail
compiler=$1 includes=$2 calls=$3 work=$4
source=$work/refused_calls.cpp
report_all_errors=-fmax-errors=0
case $("$compiler" --version) in *clang*) report_all_errors=-ferror-limit=0 ;; esac

{
    echo '#include "Public/Vorlane.h"'
    echo 'using namespace vorlane;'
    echo 'void accepted() { Vorlane::registerEventWithType("type", "label"); }'
    echo '#line 1 "RefusedCalls.txt"'
    awk '{ print "void refused" NR "() { " $0 " }" }' "$calls"
} >"$source"
if "$compiler" -std=c++20 -fsyntax-only "$report_all_errors" -I"$includes" "$source" 2>"$work/refused_calls.log"; then
    echo "every call was accepted" >&2
    exit 1
fi
if grep -E '^[^ ]*(refused_calls\.cpp|Vorlane\.h):[0-9]+:[0-9]+: error:' "$work/refused_calls.log"; then
    echo "the accepted call, or the header, does not compile" >&2
    exit 1
fi

result=0
number=0
while IFS= read -r call; do
    number=$((number + 1))
    if ! grep -qE "^RefusedCalls\.txt:$number:[0-9]+: error:" "$work/refused_calls.log"; then
        echo "accepted: $call" >&2
        result=1
    fi
done <"$calls"
[[ $number -gt 50 ]] || { echo "only $number calls were read" >&2; exit 1; }
exit $result
