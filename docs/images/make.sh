#!/usr/bin/env bash
# make.sh [TOOLS]: draws demo.png, what a terminal shows of three commands on the table of nuclides. Needs chromium and
# script (of bsdutils).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
tools=$(cd "${1:-build/release/tools}" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export COLUMNS=96 PATH="$tools:$PATH"
cp data/nuclides.csv "$work"

escape() { sed 's/&/\&amp;/g; s/</\&lt;/g; s/>/\&gt;/g'; }

# Shows a command and what it leaves on a terminal: of a line that is drawn over, the last state.
run() {
  printf '<b>$ %s</b>\n' "$(escape <<<"$1")"
  (cd "$work" && script -qec "stty cols $COLUMNS; $1" /dev/null) | sed 's/\r$//; s/.*\r//; s/\x1b\[[0-9;?]*[a-zA-Z]//g' | escape
}

{
  cat <<'EOF'
<!DOCTYPE html><meta charset="utf-8"><style>
body { margin: 0; background: #1d2230; }
pre { margin: 0; padding: 18px 22px; font: 15px/1.32 "DejaVu Sans Mono", monospace; color: #d5dae6; }
b { color: #8fd19e; font-weight: normal; }
</style><pre>
EOF
  run 'qzconvert -progress bar -infer 4000 -meta "half_life: Units.Time.s" nuclides.csv all.qzr'
  run 'qzfilter -progress bar -where "half_life > 1e9" -set "decay = ln(2) / half_life" all.qzr long.qzr'
  run 'qzshow -stats long.qzr'
  printf '</pre>\n'
} >"$work/demo.html"
chromium --headless --no-sandbox --disable-gpu --hide-scrollbars --window-size=960,470 \
  --screenshot=docs/images/demo.png "file://$work/demo.html" 2>/dev/null
