#!/usr/bin/env bash
# Runs one harness: `replay` runs it once over its seeds and its regression
# inputs; `fuzz SECONDS` fuzzes from them for that long into a scratch corpus
# (or into LQ_FUZZ_CORPUS, when set, which then keeps what it finds).
# Any finding fails the run; its input is left in FINDINGS as <target>-*.
#   run-harness.sh HARNESS TARGET SEEDS REGRESSIONS DICTIONARY FINDINGS replay|fuzz [SECONDS] [libFuzzer options]
set -euo pipefail
harness=$1 target=$2 seeds=$3 regressions=$4 dictionary=$5 findings=$6 mode=$7
shift 7

inputs=("$seeds")
[ -d "$regressions" ] && inputs+=("$regressions")
mkdir -p "$findings"
common=(-artifact_prefix="$findings/$target-" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1)

# The harness's files go to a folder of this run, in memory when there is
# one, removed however the harness ends.
base=/dev/shm
[ -d "$base" ] && [ -w "$base" ] || base=${TMPDIR:-/tmp}
LQ_FUZZ_WORK_BASE=$(mktemp -d "$base/lq-fuzz-run.XXXXXX")
export LQ_FUZZ_WORK_BASE
scratch=("$LQ_FUZZ_WORK_BASE")
trap 'rm -rf "${scratch[@]}"' EXIT

if [ "$mode" = replay ]; then
  # Files given one by one are each run once.
  mapfile -t files < <(find "${inputs[@]}" -type f ! -name '.*' | sort)
  echo "$target: ${#files[@]} inputs"
  "$harness" "${common[@]}" "$@" "${files[@]}"
  exit
fi

seconds=$1
shift
corpus=${LQ_FUZZ_CORPUS:-}
if [ -z "$corpus" ]; then
  corpus=$(mktemp -d)
  scratch+=("$corpus")
fi
"$harness" "${common[@]}" -dict="$dictionary" -max_total_time="$seconds" "$@" "$corpus" "${inputs[@]}"
