# Each installed header compiles alone, and includes only the standard library, nlohmann/json and other installed headers.
source "$(dirname "$0")/common.sh"
cd "$prefix/include"
strangers=$(grep -rnE '^\s*#\s*include' vorlane | grep -vE '#include <([a-z_]+|nlohmann/[a-z_]+\.hpp|vorlane/[A-Za-z/]+\.h)>$' || true)
[[ -z $strangers ]] || fail "$strangers"
find vorlane -name '*.h' -print0 | xargs -0 -P 2 -I HEADER sh -c '
    echo "#include <HEADER>" | "$1" -std=c++20 -fsyntax-only -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -I. -x c++ -
' sh "$CXX"
