#!/usr/bin/env bash
# demo.sh TOOLS: turns the table of nuclides into records, keeps the long-lived ones, and shows them.
set -euo pipefail
tools=$(cd "$1" && pwd)
cd "$(dirname "${BASH_SOURCE[0]}")/.."
work=build/demo
mkdir -p "$work"

# Shows a command as one would type it, and runs it.
run() {
  printf '\n$ %s' "$1"
  local word
  for word in "${@:2}"; do
    case $word in
      *[\ \;\&\(\>]*) printf ' "%s"' "$word" ;;
      *) printf ' %s' "$word" ;;
    esac
  done
  printf '\n'
  "$tools/$1" "${@:2}"
}

run qzconvert -progress bar -infer 4000 \
  -meta "exact_mass: Units.Mass.Da; half_life: Units.Time.s; abundance: Annotation.Description=percent" \
  data/nuclides.csv "$work/nuclides.qzr"
run qzshow -schema "$work/nuclides.qzr"
run qzfilter -progress bar -where "half_life > 1e9" \
  -set "decay = ln(2) / half_life" -meta "decay: Units.Frequency.Hz; decay: Annotation.Description=decay constant" \
  -keep "nuclide,exact_mass,spin,half_life,decay" "$work/nuclides.qzr" "$work/long-lived.qzr"
run qzshow -rows 15 "$work/long-lived.qzr"
run qzshow -stats "$work/long-lived.qzr"
