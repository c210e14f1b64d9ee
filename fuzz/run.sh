#!/usr/bin/env bash
# fuzz/run.sh BUILD [NAME] [SECONDS]: fuzzes every target of a build folder (or one) from its kept inputs, each with
# 300,000 executions or, where SECONDS is given, for that long. RUNS and SEED in the environment set another number of
# executions, and one seed so that two runs try the same inputs. What crashes is left in BUILD/crashes.
set -euo pipefail
build=$(cd "$1" && pwd)
name=${2:-}
seconds=${3:-}
cd "$(dirname "${BASH_SOURCE[0]}")"
mkdir -p "$build/crashes"
pids=()
names=()
run_target() {
  local target=$1 grown limit=("-runs=${RUNS:-300000}" "-seed=${SEED:-0}")
  grown=$(mktemp -d "$build/grown-$target-XXXX")
  [ -z "$seconds" ] || limit=("-max_total_time=$seconds")
  local dictionary=()
  [ ! -f "$target.dict" ] || dictionary=("-dict=$target.dict")
  "$build/fuzz/$target" "${limit[@]}" "${dictionary[@]}" -max_len=4096 -timeout=20 -rss_limit_mb=2048 -verbosity=0 \
    -print_final_stats=1 -artifact_prefix="$build/crashes/$target-" "$grown" "corpus/$target" \
    >"$build/$target.log" 2>&1
  rm -rf "$grown"
}
wait_one() {
  local status=0
  wait "${pids[0]}" || status=$?
  printf '%s: %s\n' "${names[0]}" "$(grep -o 'number_of_executed_units: [0-9]*' "$build/${names[0]}.log" || true)"
  if [ $status != 0 ]; then tail -n 40 "$build/${names[0]}.log"; exit 1; fi
  pids=("${pids[@]:1}")
  names=("${names[@]:1}")
}
for source in *_fuzz.cpp; do
  target=${source%.cpp}
  [ -z "$name" ] || [ "$name" = "$target" ] || continue
  run_target "$target" &
  pids+=($!)
  names+=("$target")
  [ ${#pids[@]} -lt "$(nproc)" ] || wait_one
done
while [ ${#pids[@]} -gt 0 ]; do wait_one; done
