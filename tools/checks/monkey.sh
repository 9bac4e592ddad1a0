#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# monkey.sh [SEED [STEPS [RUNS]]]   random use of the program with random faults, under the sanitizers: STEPS (3000) steps
#                                   from SEED (1), then from the next seed, RUNS (2) runs in all, two at a time
#
# What is looked at after each step stands in tests/monkey/Invariants.h. A finding prints its seed, its step and what
# was done last, and the exit code is 1; the same seed finds it again.
set -euo pipefail
cd "$(dirname "$0")/../.."
# shellcheck source=tools/setup.sh
. tools/setup.sh

seed=${1:-1} steps=${2:-3000} runs=${3:-2}
[[ $seed$steps$runs =~ ^[0-9]+$ ]] || die "usage: monkey.sh [SEED [STEPS [RUNS]]]"

install_missing "${build_packages[@]}"
build asan monkey

export ASAN_OPTIONS=detect_leaks=1:detect_stack_use_after_return=1:handle_abort=1
export LSAN_OPTIONS=suppressions=$PWD/tests/sanitizers/lsan.supp:print_suppressions=0
export UBSAN_OPTIONS=print_stacktrace=1
export LC_ALL=C.UTF-8

# run SEED: in a folder of its own, since the program keeps its settings beside itself.
run() {
    local folder=build/asan/monkey/$1
    rm -rf "$folder"
    mkdir -p "$folder"
    cp -lr build/asan/tests/monkey/{monkey,mover_en_US.qm,deviceModelsParam,plots} "$folder"
    if "$folder/monkey" "$1" "$steps" >"$folder/log" 2>&1; then
        tail -n 1 "$folder/log"
        return 0
    fi
    printf 'seed %s: FINDING, see %s/log\n' "$1" "$folder"
    grep -E -A 22 '== monkey|ERROR: |runtime error' "$folder/log" | head -n 60
    return 1
}

say "Monkey, $runs runs of $steps steps from seed $seed"
failed=0
waiting=()
for ((k = 0; k < runs; ++k)); do
    run $((seed + k)) &
    waiting+=($!)
    if [ ${#waiting[@]} -eq 2 ]; then
        wait "${waiting[0]}" || failed=1
        waiting=("${waiting[@]:1}")
    fi
done
for one in "${waiting[@]}"; do
    wait "$one" || failed=1
done
exit $failed
