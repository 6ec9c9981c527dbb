#!/usr/bin/env bash
# CPU of the browser's UI process over 10 s, in % of one core: first with the window shown and
# the orbs breathing behind the start page, then with the window unmapped (what minimising does
# on X11). Runs the built browser under Xvfb with the cairo renderer, in a fresh profile.
#   bash bench/orbs_cpu.sh [seconds]
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/env.sh
ovel_headless_env
export OVEL_BENCH_SECONDS="${1:-10}"

profile=$(mktemp -d)
trap 'rm -rf "$profile"' EXIT
mkdir -p "$profile/home" "$profile/config" "$profile/data" "$profile/cache"
export HOME="$profile/home" XDG_CONFIG_HOME="$profile/config" XDG_DATA_HOME="$profile/data" \
  XDG_CACHE_HOME="$profile/cache"

xvfb-run -a -s "-screen 0 1200x780x24" dbus-run-session -- bash -c '
  ticks() { awk "{ print \$14 + \$15 }" "/proc/$1/stat"; }
  measure() {
    local before after hz
    hz=$(getconf CLK_TCK)
    before=$(ticks "$browser")
    sleep "$OVEL_BENCH_SECONDS"
    after=$(ticks "$browser")
    awk -v t=$((after - before)) -v hz="$hz" -v s="$OVEL_BENCH_SECONDS" \
      "BEGIN { printf \"%.1f\", 100 * t / hz / s }"
  }
  build/ovel-web >/dev/null 2>&1 &
  browser=$!
  sleep 6
  window=$(xdotool search --sync --name "^Ovel Web$" | head -1)
  shown=$(measure)
  xdotool windowunmap "$window"
  sleep 2
  hidden=$(measure)
  echo "ovel-web UI process, ${OVEL_BENCH_SECONDS} s, GSK_RENDERER=$GSK_RENDERER"
  echo "  window shown, orbs breathing: ${shown} % of one core"
  echo "  window unmapped:              ${hidden} % of one core"
  kill "$browser"
  wait "$browser" 2>/dev/null || true
' 2>/dev/null
