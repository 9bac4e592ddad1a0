#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# fuzz.sh [SECONDS [TARGET...]]   runs every target of tests/fuzz (or those named) for SECONDS (20), two at a time
# fuzz.sh --short                 for 5 s each, in the build folder of asan, which finds less in that time but is there
#
# Starts from the inputs kept in tests/fuzz/corpus (*.hex are bytes in hexadecimal, the others stand as they are) and
# from what earlier runs on this machine have found, in build/fuzz/corpus. An input that breaks a target stays in
# build/fuzz/findings; its name is printed, and the exit code is 1. Run it again with
# build/fuzz/tests/fuzz/TARGET FILE, mend the cause, and keep it in tests/fuzz/corpus beside a test of its own.
#
# FUZZ_SEED is where its random numbers begin; another one each time when it is not set.
set -euo pipefail
cd "$(dirname "$0")/../.."
# shellcheck source=tools/setup.sh
. tools/setup.sh

tree=fuzz
if [ "${1:-}" = --short ]; then
    tree=asan
    set -- 5
fi
seconds=${1:-20}
[[ $seconds =~ ^[1-9][0-9]*$ ]] || die "usage: fuzz.sh [SECONDS [TARGET...]]"
targets=("${@:2}")
[ ${#targets[@]} -gt 0 ] || mapfile -t targets < <(basename -s .cpp tests/fuzz/fuzz*.cpp)

install_missing "${build_packages[@]}"
build "$tree" "${targets[@]}"

export ASAN_OPTIONS=detect_leaks=1:detect_stack_use_after_return=1:allocator_may_return_null=0
export LSAN_OPTIONS=suppressions=$PWD/tests/sanitizers/lsan.supp:print_suppressions=0
export UBSAN_OPTIONS=print_stacktrace=1
export LC_ALL=C.UTF-8
# The files that some targets read are written for every input.
[ ! -w /dev/shm ] || export TMPDIR=/dev/shm

# run TARGET: from its seeds, for the time given.
run() {
    local target=$1 options=() log=build/$tree/$1.log
    local seeds=build/$tree/seeds/$target corpus=build/fuzz/corpus/$target findings=build/fuzz/findings/$target
    rm -rf "$seeds"
    mkdir -p "$seeds" "$corpus" "$findings"
    local file
    for file in "tests/fuzz/corpus/$target"/*; do
        case $file in
        *.hex) tr -d ' \n' <"$file" | tr a-f A-F | basenc --base16 -d >"$seeds/$(basename "$file")" ;;
        *) cp "$file" "$seeds" ;;
        esac
    done
    [ "$target" != fuzzScenario ] || cp controllers/simulated/scenarios/*.json "$seeds"
    [ ! -f "tests/fuzz/$target.dict" ] || options+=("-dict=tests/fuzz/$target.dict")
    # Qt's JSON reader does not free an object that ends in the middle, and most do here.
    [ "$target" != fuzzModelFile ] || ASAN_OPTIONS=${ASAN_OPTIONS/detect_leaks=1/detect_leaks=0}
    "build/$tree/tests/fuzz/$target" "$corpus" "$seeds" "${options[@]}" -seed="${FUZZ_SEED:-0}" -max_total_time="$seconds" -timeout=20 \
        -rss_limit_mb=2048 -max_len=4096 -print_final_stats=1 -artifact_prefix="$findings/" >"$log" 2>&1
}

# "executions coverage features corpus" of a run, from its log.
figures() {
    sed -nE 's/^#([0-9]+).*DONE +cov: ([0-9]+) ft: ([0-9]+) corp: ([0-9]+).*/\1 executions, \2 edges, \3 features, \4 inputs/p' "build/$tree/$1.log"
}

failed=0
finish() {
    local target=$1 pid=$2
    if wait "$pid"; then
        printf '%-17s %s\n' "$target" "$(figures "$target")"
    else
        failed=1
        printf '%-17s FINDING, see build/%s/%s.log:\n' "$target" "$tree" "$target"
        grep -E '== finding|ERROR: |runtime error|SUMMARY|Test unit written' "build/$tree/$target.log" | head -n 8
    fi
}

say "Fuzzing, $seconds s each"
waiting=()
for target in "${targets[@]}"; do
    run "$target" &
    waiting+=("$target $!")
    if [ ${#waiting[@]} -eq 2 ]; then
        # shellcheck disable=SC2086 # name and process
        finish ${waiting[0]}
        waiting=("${waiting[@]:1}")
    fi
done
for one in "${waiting[@]}"; do
    # shellcheck disable=SC2086
    finish $one
done
exit $failed
