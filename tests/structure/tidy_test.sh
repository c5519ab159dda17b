#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# tools/check tidy, on a project of a few lines: it passes what is right, finds what is not, read or compiled alone or
# together with others, also where a header is precompiled, and looks again at what has changed and at nothing else.
#
#   tidy_test.sh SOURCE_DIR
set -euo pipefail
source_dir=${1:?the directory of the sources is missing}
for program in clang-tidy jq ninja; do
    command -v $program >/dev/null || { echo "Skipped: $program is not installed."; exit 77; }
done

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
mkdir -p tools src client host process tests
cp "$source_dir"/tools/{check,command.sh} tools
cp "$source_dir/.clang-tidy" .
cp "$source_dir/src/.clang-tidy" src
printf '#!/bin/sh\n' >tools/install-packages # all is here
chmod +x tools/install-packages
cat >CMakeLists.txt <<'END'
cmake_minimum_required(VERSION 3.25)
project(tidied LANGUAGES CXX)
add_library(alone OBJECT src/alone.cpp host/header.cpp)
target_precompile_headers(alone PRIVATE <cstddef>)
add_library(together OBJECT client/one.cpp client/two.cpp)
set_target_properties(together PROPERTIES UNITY_BUILD ON)
add_library(again OBJECT src/alone.cpp)
add_library(alike OBJECT process/first.cpp tests/second.cpp tests/third.cpp)
END
cat >CMakePresets.json <<'END'
{ "version": 4,
  "configurePresets": [ { "name": "dev", "generator": "Ninja", "binaryDir": "${sourceDir}/build/dev",
                          "cacheVariables": { "CMAKE_EXPORT_COMPILE_COMMANDS": "ON" } } ],
  "buildPresets": [ { "name": "checks", "configurePreset": "dev" } ] }
END

# Sources that nothing is to be said of.
sound() {
    printf 'int _given(int number)\n{\n    return number;\n}\n' >src/alone.cpp # a name as clients of the library give them
    printf '#include "header.h"\n\nint used()\n{\n    return limit;\n}\n' >host/header.cpp
    printf 'constexpr int limit = 1;\n' >host/header.h
    printf 'int one()\n{\n    return 1;\n}\n' >client/one.cpp
    printf 'int two()\n{\n    return 2;\n}\n' >client/two.cpp
    # Each compiles, but the second not after the first: they have something of the same name.
    printf '#include <cstddef>\n\nstatic std::size_t same()\n{\n    return 1;\n}\n\nstd::size_t first()\n{\n    return same();\n}\n' \
        >process/first.cpp
    printf 'static int same()\n{\n    return 2;\n}\n\nint second()\n{\n    return same();\n}\n' >tests/second.cpp
    printf 'int third()\n{\n    return 3;\n}\n' >tests/third.cpp
}

looked_at() { find build/check -type f ! -name compile_commands.json | wc -l; }

# expect_failure CHECK FILE LINE...: with these lines in the place of the file's, it is found.
expect_failure() {
    local check=$1 file=$2
    shift 2
    sound
    printf '%s\n' "$@" >"$file"
    if tools/check tidy >report 2>&1; then
        cat report
        echo "not found: $check in $file"
        exit 1
    fi
    for told in "$file" "[$check" 'check: failed: tidy'; do
        grep -qF "$told" report || { cat report; echo "not told of $check in $file: $told"; exit 1; }
    done
}

expect() { # expect WHAT EXPECTED ACTUAL
    [ "$2" = "$3" ] || { cat report; echo "$1: $3 instead of $2"; exit 1; }
}

sound
tools/check tidy >report 2>&1 || { cat report; echo 'sound sources are refused'; exit 1; }
grep -qF '7 files; not built here:' report || { cat report; echo 'not all files are looked at'; exit 1; }
# Two together, two compiled together, and of three that cannot be read together one alone, two together, and all.
expect 'what is remembered as right' 5 "$(looked_at)"
touch process/first.cpp build/check/compile_commands.json
tools/check tidy >report 2>&1
expect 'what was right is not looked at again' 5 "$(looked_at)"
printf 'int third()\n{\n    return 4;\n}\n' >tests/third.cpp
tools/check tidy >report 2>&1
expect 'what has changed is looked at again, with what is read together with it' 7 "$(looked_at)"
tools/check --alone tidy >report 2>&1
expect 'each is looked at alone that was not yet' 11 "$(looked_at)"

expect_failure readability-braces-around-statements src/alone.cpp 'int given(int number)' '{' '    if (number > 1)' \
    '        return 2;' '    return number;' '}'
expect_failure readability-identifier-naming client/two.cpp 'constexpr int UPPER = 2;' 'int two()' '{' '    return UPPER;' '}'
expect_failure readability-identifier-naming host/header.h 'constexpr int limit = 1;' 'struct lower_case' '{' '};'
expect_failure readability-identifier-naming host/header.cpp '#include "header.h"' 'int _given()' '{' '    return limit;' '}'
expect_failure readability-misleading-indentation client/one.cpp 'int one(int number)' '{' '    if (number > 1)' \
    '        number = 2;' '        number = 3;' '    return number;' '}'
expect_failure clang-diagnostic-error host/header.cpp 'std::size_t used()' '{' '    return 1;' '}'
expect_failure readability-braces-around-statements process/first.cpp 'int first(int number)' '{' '    if (number > 1)' \
    '        return 2;' '    return number;' '}'
expect_failure readability-identifier-naming tests/second.cpp 'static int same()' '{' '    return 2;' '}' 'int Second()' '{' \
    '    return same();' '}'
expect_failure readability-identifier-naming tests/third.cpp 'int Third()' '{' '    return 3;' '}'

# What one does not include itself is found where it is read alone.
sound
printf 'std::size_t third()\n{\n    return 3;\n}\n' >tests/third.cpp
cp CMakeLists.txt CMakeLists.without
echo 'target_precompile_headers(alike PRIVATE <cstddef>)' >>CMakeLists.txt
tools/check tidy >report 2>&1 || { cat report; echo 'what another includes is not there for those that are read with it'; exit 1; }
if tools/check --alone tidy >report 2>&1; then
    cat report
    echo 'what is not included is not found'
    exit 1
fi
grep -q 'tests/third.cpp:1:1: error: .*\[clang-diagnostic-error' report || { cat report; echo 'not told of what is not included'; exit 1; }
mv CMakeLists.without CMakeLists.txt

sound
tools/check tidy >report 2>&1 || { cat report; echo 'mended sources are refused'; exit 1; }
echo 'what is wrong is found, and what is right passes'
