#!/usr/bin/env bash
# Runs the benchmark programs one after another and prints the table of medians and ratios.
# usage: run.sh BUILD_DIR [group...]     e.g. run.sh build/release packets strings
# Keep the machine quiet. REPETITIONS (5) interleaved repetitions are taken, MIN_TIME (0.05) seconds each.
# The group growth takes minutes and is run only by name. It is measured in order, since each of its
# lines reads what the one before wrote. To reach 5 million names, TMPDIR must have as many inodes.
set -euo pipefail
programs=$1/Benchmarks
shift
results=$programs/results
mkdir -p "$results"
[ $# -gt 0 ] || set -- packets text references compression filters packageFile treeAndHash signals blocks strings catalogs cache packing linear paths files walks output options moveable processes sockets primitives pool plugins undo
# Files are written to memory: what is measured is the code, not the disk.
[ -n "${TMPDIR:-}" ] || { [ -w /dev/shm ] && export TMPDIR=/dev/shm; }
for group; do
  [ -x "$programs/$group" ] || continue
  echo "running $group ..." >&2
  interleaved=true
  [ "$group" != growth ] || interleaved=false
  "$programs/$group" --benchmark_repetitions="${REPETITIONS:-5}" --benchmark_min_time="${MIN_TIME:-0.05}" \
    --benchmark_enable_random_interleaving=$interleaved \
    --benchmark_out="$results/$group.json" --benchmark_out_format=json >"$results/$group.log" 2>&1
done
python3 "$(dirname "$0")/report.py" "$results" "$@"
