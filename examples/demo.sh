#!/usr/bin/env bash
# demo.sh TOOLS: turns the table of nuclides into records, keeps the long-lived ones, and shows them.
set -euo pipefail
tools=$(cd "$1" && pwd)
cd "$(dirname "${BASH_SOURCE[0]}")/.."
work=build/demo
mkdir -p "$work"

run() {
  printf '\n$ %s' "$1"
  printf ' %q' "${@:2}"
  printf '\n'
  "$tools/$1" "${@:2}"
}

run qzconvert data/nuclides.csv "$work/nuclides.qzr" -progress bar \
  -meta "exact_mass: Units.Mass.Da; half_life: Units.Time.s; abundance: Annotation.Description=percent"
run qzshow "$work/nuclides.qzr" -schema
run qzfilter "$work/nuclides.qzr" "$work/long-lived.qzr" -progress bar \
  -where "half_life > 1e9" \
  -set "decay = ln(2) / half_life" -meta "decay: Units.Frequency.Hz; decay: Annotation.Description=decay constant" \
  -keep "nuclide,exact_mass,spin,half_life,decay"
run qzshow "$work/long-lived.qzr" -rows 15
run qzshow "$work/long-lived.qzr" -stats
