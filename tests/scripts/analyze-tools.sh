#!/bin/sh
# What scripts/analyze makes of its tools, which are stood in for: ./analyze-tools.sh FOLDER
set -eu
here=$(cd "$(dirname "$0")" && pwd)
folder=$1

rm -rf "$folder"
mkdir -p "$folder/tools" "$folder/build"
echo '[]' >"$folder/build/compile_commands.json"
for name in sh dirname find sort mktemp rm nproc xargs grep cat; do
    ln -s "$(command -v "$name")" "$folder/tools/$name"
done

# tool NAME SCRIPT: what stands in for it
tool() {
    printf '#!/bin/sh\n%s\n' "$2" >"$folder/tools/$1"
    chmod +x "$folder/tools/$1"
}

# expect CASE CODE OUTPUT ERRORS
expect() {
    code=0
    PATH=$folder/tools DLP_BUILD=$folder/build "$here/../../scripts/analyze" a.cpp >"$folder/out" 2>"$folder/err" ||
        code=$?
    if [ "$code" != "$2" ] || [ "$(cat "$folder/out")" != "$3" ] || [ "$(cat "$folder/err")" != "$4" ]; then
        echo "$1: $code"
        cat "$folder/out" "$folder/err"
        exit 1
    fi
}

expect 'neither is there' 3 '' 'no cppcheck (install the package cppcheck)'
tool cppcheck ''
expect 'the second is missing' 3 '' 'no clang-tidy (install the package clang-tidy)'
tool clang-tidy 'echo "1 warning generated." >&2'
expect 'nothing found' 0 '1 sources, 0 findings' ''
tool cppcheck 'echo "a.cpp:1: warning: odd [cppcheck-odd]" >&2'
tool clang-tidy 'echo "a.cpp:2:1: warning: null [clang-analyzer]"; echo "  a line"'
expect 'both find something' 1 'a.cpp:1: warning: odd [cppcheck-odd]
a.cpp:2:1: warning: null [clang-analyzer]
1 sources, 2 findings' ''
tool cppcheck 'echo "no such option"; exit 1'
expect 'the first fails, the second finds' 3 'a.cpp:2:1: warning: null [clang-analyzer]' 'no such option
cppcheck failed (exit code 1)'
tool cppcheck ''
tool clang-tidy 'echo "cannot load a library" >&2; exit 127'
expect 'the second fails' 3 '' 'cannot load a library
clang-tidy failed (exit code 123)'
tool clang-tidy 'kill -SEGV $$'
expect 'the second crashes' 3 '' "$(printf '%s\n' 'xargs: clang-tidy: terminated by signal 11' 'clang-tidy failed (exit code 125)')"
