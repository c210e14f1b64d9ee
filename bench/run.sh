#!/usr/bin/env bash
# bench/run.sh [wNN ...] [tools]: runs the workloads named (all of them and the tools by default), the peers and the
# toolkit in one go, and prints one table. REPS and MIN_TIME in the environment set the number and length of the runs. Results: build/bench.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
root=$(cd .. && pwd)
export BUILD=$root/build/release OUT=$root/build/bench
export BENCH_DATA=$OUT/data
reps=${REPS:-7}
min_time=${MIN_TIME:-0.1}
mkdir -p "$OUT/json" "$OUT/data"

if [ "$*" = tools ]; then
  exec python3 tools.py "$BUILD/tools" "$OUT/tools"
fi
make -s ours ONLY="$*"
if ! make -s -k peers ONLY="$*" 2>"$OUT/peers.log"; then
  echo "Some peers are missing: their programs don't build here (build/bench/peers.log). Debian has them all:"
  echo "  apt-get install protobuf-compiler libprotobuf-dev libmsgpack-cxx-dev libflatbuffers-dev libbson-dev" \
    "libavro-dev nlohmann-json3-dev libsimdjson-dev libcli11-dev libcxxopts-dev libboost-program-options-dev" \
    "libboost-dev libabsl-dev libfmt-dev libspdlog-dev libgoogle-glog-dev librdkit-dev libgsl-dev qtbase5-dev libeigen3-dev"
fi

chosen() {
  local name=${1#peers_}
  name=${name#ours_}
  shift
  [ $# -gt 0 ] || return 0
  for word in "$@"; do [[ $name != "$word"* ]] || return 0; done
  return 1
}
rm -f "$OUT"/json/*.json
# Each workload's peers right before ours: a machine changes its pace.
mapfile -t programs < <(printf '%s\n' "$OUT"/peers_w* "$OUT"/ours_w* | sed 's/.*_\(w[0-9]*\)_/\1 &/' | sort -k1,1 -k2,2r)
for program in "${programs[@]#* }"; do
  name=$(basename "$program")
  [ -x "$program" ] || continue
  chosen "$name" "$@" || continue
  echo "running $name" >&2
  "$program" --benchmark_repetitions="$reps" --benchmark_min_time="$min_time" \
    --benchmark_enable_random_interleaving=true --benchmark_display_aggregates_only=true \
    --benchmark_out="$OUT/json/$name.json" --benchmark_out_format=json >"$OUT/json/$name.txt" 2>"$OUT/json/$name.err" ||
    { tail -n 5 "$OUT/json/$name.err"; exit 1; }
done
python3 report.py "$OUT/json" --ours
[ $# -gt 0 ] || python3 tools.py "$BUILD/tools" "$OUT/tools"
