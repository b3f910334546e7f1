#!/usr/bin/env bash
# Builds the fuzz targets and runs one after the other, for SECONDS of wall-clock time each; prints the
# executions, edges, processor time and findings of each. The inputs that they discover are kept, and
# the next run goes on from them. A target has 2 GB of memory, and an input 10 seconds.
#
#   scripts/fuzz.sh SECONDS [TARGET ...]     all targets without any
#   scripts/fuzz.sh --merge [TARGET ...]     fuzz/corpus anew, with the fewest kept inputs for all edges
#   scripts/fuzz.sh --summary                the volume of all runs so far
#   scripts/fuzz.sh --help
#
# RAVOLT_FUZZ_CORPUS is the folder of the kept inputs, build/fuzz-corpus without it; findings are in its
# folder `findings`, and a line for each run in its file `runs.txt`. Exits with 1 after a finding.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
source scripts/common.sh
root=$PWD

mode=run seconds=0
case "${1:-}" in
--help | -h)
    sed -n '2,13s/^# \{0,1\}//p' "$0"
    exit 0
    ;;
--merge) mode=merge ;;
--summary) mode=summary ;;
*[!0-9]* | '') fail "needs a number of seconds; see scripts/fuzz.sh --help" ;;
*) seconds=$1 ;;
esac
shift

mapfile -t targets < <(sed -n 's/^RV_FUZZ_TARGET(\(.*\))$/\1/p' fuzz/targets.inc)
[ $# -eq 0 ] || targets=("$@")

kept=$(realpath -m "${RAVOLT_FUZZ_CORPUS:-build/fuzz-corpus}")
findings=$kept/findings
mkdir -p "$findings"

# What the rows in runs.txt add up to; the lines between them are the dates of the runs.
summarize() {
    printf '%-16s %10s %7s %10s\n' target executions edges processor
    awk '$5 == "s" { executions[$1] += $2; edges[$1] = $3; seconds[$1] += $4 }
        END {
            for (target in seconds) {
                printf "%-16s %10d %7d %8d s\n", target, executions[target], edges[target], seconds[target] | "sort"
                all += executions[target]; time += seconds[target]
            }
            close("sort")
            printf "%-16s %10d %7s %8d s\n", "together", all, "", time
        }' "$kept/runs.txt"
}
if [ $mode = summary ]; then
    [ -f "$kept/runs.txt" ] || fail "no run so far: there is no $kept/runs.txt"
    summarize
    exit
fi
# Each process has its files in a folder there, which a crash leaves. In memory they cost no time.
[ -w /dev/shm ] && export TMPDIR=/dev/shm
TMPDIR=$(mktemp -d) || fail "no folder for temporary files"
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT
export ASAN_OPTIONS="detect_leaks=1:detect_stack_use_after_return=1:allocator_may_return_null=1"
export LSAN_OPTIONS="suppressions=$PWD/tests/support/leaks.supp:print_suppressions=0"
export UBSAN_OPTIONS="print_stacktrace=1"

install_packages "${demo_packages[@]}" clang
configure_and_build fuzz -- "${targets[@]/#/fuzz_}" >"$TMPDIR/build.log" 2>&1 ||
    { cat "$TMPDIR/build.log"; fail "building the fuzz targets failed"; }

# Small inputs find as much as large ones, and are faster.
largest() {
    case $1 in
    terrainGeometry) echo 16384 ;;
    video) echo 8192 ;;
    *) echo 4096 ;;
    esac
}

# number_of NAME FILE: the last number after that name in the output of libFuzzer.
number_of() { grep -aoE "$1:? *[0-9]+" "$2" | grep -oE '[0-9]+$' | tail -n 1; }

# run_target TARGET: prints a row; fails after a finding.
run_target() {
    local target=$1 corpus=$kept/$1 log=$TMPDIR/$1.log status=0 options=() TIMEFORMAT='%U %S'
    local dictionary=$root/fuzz/dictionaries/$1.txt result=none used
    mkdir -p "$corpus"
    [ ! -f "$dictionary" ] || options=("-dict=$dictionary")
    # The engine writes its log where it runs.
    used=$( cd "$TMPDIR" && { time "$root/build/fuzz/fuzz/fuzz_$target" "${options[@]}" \
        -max_total_time="$seconds" -max_len="$(largest "$target")" -timeout=10 \
        -rss_limit_mb=2048 -print_final_stats=1 -reload=0 -artifact_prefix="$findings/$target-" \
        "$corpus" "$root/fuzz/corpus/$target" >"$log" 2>&1; } 2>&1) || status=$?
    if [ $status -ne 0 ]; then
        result=$(grep -aE '^Finding:|runtime error:|^SUMMARY:' "$log" | head -n 1)
        cp "$log" "$findings/$target.log"
    fi
    printf '%-16s %10s %7s %8s s  %s\n' "$target" \
        "$(number_of 'stat::number_of_executed_units' "$log")" "$(number_of 'cov' "$log")" \
        "$(awk '{ printf "%d", $1 + $2 }' <<<"$used")" "${result:-exit status $status}" |
        tee -a "$kept/runs.txt"
    return $status
}

# The fewest of the tree's and the kept inputs that reach all edges, and those of the tree that have a name
# of their own: samples, and inputs whose defect is mended.
merge_target() {
    local target=$1 merged=$TMPDIR/merged-$1 corpus=$root/fuzz/corpus/$1
    mkdir -p "$merged" "$kept/$target"
    find "$corpus" -type f | grep -vE '/[0-9a-f]{40}$' | xargs -r cp -t "$merged"
    (cd "$TMPDIR" && "$root/build/fuzz/fuzz/fuzz_$target" -set_cover_merge=1 -use_counters=0 \
        -max_len=1500 -timeout=10 "$merged" "$corpus" "$kept/$target") >"$TMPDIR/merge.log" 2>&1 ||
        { tail -n 20 "$TMPDIR/merge.log"; fail "merging $target failed"; }
    rm -rf "$corpus"
    mv "$merged" "$corpus"
    echo "$target: $(find "$corpus" -type f | wc -l) inputs"
}

failed=0
if [ $mode = merge ]; then
    for target in "${targets[@]}"; do merge_target "$target"; done
    exit
fi
echo "$(date -u +%FT%TZ)" >>"$kept/runs.txt"
printf '%-16s %10s %7s %10s  %s\n' target executions edges processor finding
for target in "${targets[@]}"; do
    run_target "$target" || failed=1
done
[ $failed -eq 0 ] || fail "there are findings: their inputs and logs are in $findings"
