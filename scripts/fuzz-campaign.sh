#!/usr/bin/env bash
# A campaign: each harness in turn fuzzed until it has had PROCESSOR_SECONDS of
# processor time, in runs of 10 minutes that resume from the kept corpus:
#   scripts/fuzz-campaign.sh PROCESSOR_SECONDS TARGET...
# Wall time says little on a shared machine; processor time is what a harness
# got. Runs at normal priority unless LQ_FUZZ_NICE says otherwise. Prints each
# run's report and the totals; stops at the first finding.
set -uo pipefail
cd "$(dirname "$0")/.."
[ $# -ge 2 ] || { echo "usage: scripts/fuzz-campaign.sh PROCESSOR_SECONDS TARGET..." >&2; exit 2; }
goal=$1
shift

# "1m2.500s" -> 62.5
seconds_of() { awk -v t="$1" 'BEGIN { split(t, p, "m"); sub("s", "", p[2]); print p[1] * 60 + p[2] }'; }

for target in "$@"; do
  cpu=0 runs=0 executions=0
  echo "== $target: start $(date -u +%T)"
  while awk -v c="$cpu" -v g="$goal" 'BEGIN { exit !(c < g) }'; do
    runs=$((runs + 1))
    report=$(LQ_FUZZ_NICE=${LQ_FUZZ_NICE:-0} scripts/fuzz.sh "$target" "${LQ_FUZZ_RUN_SECONDS:-600}" 2>&1)
    status=$?
    echo "$report" | sed "s/^/[$target $runs] /"
    read -r user system < <(echo "$report" | sed -n 's/^processor time (user, system): //p')
    cpu=$(awk -v c="$cpu" -v u="$(seconds_of "$user")" -v s="$(seconds_of "$system")" 'BEGIN { print c + u + s }')
    done_runs=$(echo "$report" | sed -n 's/^#\([0-9]*\).*DONE.*/\1/p' | tail -1)
    executions=$((executions + ${done_runs:-0}))  # a run ended by a finding prints no DONE line
    [ "$status" -eq 0 ] || { echo "== $target: finding after $runs runs"; exit "$status"; }
  done
  echo "== $target: end $(date -u +%T), $runs runs, $executions executions, $cpu processor seconds"
done
