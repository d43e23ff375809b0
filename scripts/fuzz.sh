#!/usr/bin/env bash
# A long fuzzing run of one harness, at the lowest priority unless
# LQ_FUZZ_NICE says otherwise (0 for a campaign on an otherwise idle machine):
#   scripts/fuzz.sh TARGET SECONDS [libFuzzer options]
# Builds the harness (asan preset, clang-16), makes the seeds, grows a corpus
# that is kept between runs in build/asan/fuzz/corpus/TARGET, and copies every
# finding into fuzz/regressions/TARGET/, where it stays as a regression input.
# Prints the run's executions and coverage; exits non-zero on a finding.
set -euo pipefail
cd "$(dirname "$0")/.."
[ $# -ge 2 ] || { echo "usage: scripts/fuzz.sh TARGET SECONDS [libFuzzer options]" >&2; exit 2; }
target=$1 seconds=$2
shift 2

# Runs side by side take turns at configuring and building.
mkdir -p build
(
  flock 9
  cmake --preset asan >/dev/null
  cmake --build --preset asan --target "fuzz_$target" lq_fuzz_seeds >/dev/null
) 9>build/.fuzz-build.lock
build=build/asan/fuzz
# Seeds of its own: two runs side by side must not remake each other's.
seeds=$(mktemp -d "$build/seeds-$target.XXXXXX")
trap 'rm -rf "$seeds"' EXIT
env -u TMPDIR "$build/lq_fuzz_seeds" "$seeds"
mapfile -t options < <(tr ';' '\n' <"$build/$target.options")
corpus=$build/corpus/$target
findings=$build/findings/long
log=$build/logs/$target.log
mkdir -p "$corpus" "$findings" "$(dirname "$log")"

export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
status=0
LQ_FUZZ_CORPUS=$corpus nice -n "${LQ_FUZZ_NICE:-19}" fuzz/run-harness.sh "$build/fuzz_$target" "$target" "$seeds/$target" \
  "fuzz/regressions/$target" fuzz/lq.dict "$findings" fuzz "$seconds" "${options[@]}" "$@" >"$log" 2>&1 || status=$?

shopt -s nullglob
for finding in "$findings/$target"-*; do
  mkdir -p "fuzz/regressions/$target"
  cp "$finding" "fuzz/regressions/$target/"
  echo "finding kept: fuzz/regressions/$target/$(basename "$finding")"
done
grep -E '^#[0-9]+[[:space:]]+DONE' "$log" | tail -1 || true
grep -E 'stat::number_of_executed_units|stat::peak_rss_mb' "$log" || true
echo "corpus: $(find "$corpus" -type f | wc -l) inputs; log: $log"
# A run gets what the machine leaves it: its processor time tells.
times >"$log.times"  # not in a subshell, which would count its own children only
echo "processor time (user, system): $(tail -1 "$log.times")"
exit "$status"
