#!/bin/sh
# scripts/mutate on a toy, all of whose survivors are known: ./mutate-toy.sh FOLDER
# Ends with 77, skipped, where the tool lacks libclang.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
folder=$1

/usr/bin/python3 -c 'from clang import cindex; cindex.Index.create()' 2>/dev/null || {
    echo "skipped: no python3-clang-14"
    exit 77
}

rm -rf "$folder"
mkdir -p "$folder"
cp -R "$here/toy" "$folder/toy"

mutate() {
    "$here/../../scripts/mutate" --tree "$folder/toy" --build "$folder/build" --folders src --tests toy_tests \
                                 --count 1000 2>"$folder/$1.log" >"$folder/$1.txt" || { cat "$folder/$1.log"; exit 1; }
    diff -u "$here/toy/$1.txt" "$folder/$1.txt"
}

mutate survivors
# Better tests: only they are built, and only the survivors are asked for.
cat "$folder/toy/tests/MoreCases.in" >>"$folder/toy/tests/ToyCases.cpp"
mutate fewer-survivors
if grep 'looking for' "$folder/fewer-survivors.log"; then exit 1; fi
# Nothing has changed: nothing is run.
mutate fewer-survivors
test ! -s "$folder/fewer-survivors.log"
