#!/bin/sh
# What fuzz/run makes of its program, which is stood in for: ./fuzz-run.sh FOLDER
set -eu
here=$(cd "$(dirname "$0")" && pwd)
folder=$1

rm -rf "$folder"
mkdir -p "$folder"

# expect CASE CODE LAST-LINE SCRIPT
expect() {
    printf '#!/bin/sh\n%s\n' "$4" >"$folder/program"
    chmod +x "$folder/program"
    code=0
    "$here/../../fuzz/run" "$folder/program" names 1 "$folder" 1 >"$folder/out" 2>&1 || code=$?
    if [ "$code" != "$2" ] || [ "$(tail -n 1 "$folder/out")" != "$3" ]; then
        echo "$1: $code"
        cat "$folder/out"
        exit 1
    fi
}

none="names: nothing was run, see $folder/names.log"
expect 'some runs' 0 'names: 2097 runs in 1 s, no finding' 'echo "stat::number_of_executed_units: 2097"'
expect 'no runs' 1 "$none" 'echo "stat::number_of_executed_units: 0"'
expect 'no number of runs' 1 "$none" 'echo "Usage:"'
expect 'something else for a number' 1 "$none" 'echo "stat::number_of_executed_units: many"'
expect 'a finding' 1 "names: a finding, see $folder/names.log; run again: $folder/program a/finding-1" \
    'echo "stat::number_of_executed_units: 7"; echo "artifact_prefix; Test unit written to a/finding-1"; exit 77'
