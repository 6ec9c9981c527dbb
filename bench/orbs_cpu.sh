#!/usr/bin/env bash
# CPU of the browser's UI process over 10 s, in % of one core, on the start page under Xvfb with
# the cairo renderer, each in a fresh profile:
#   1. the window shown and the orbs breathing behind the page,
#   2. the same window unmapped (what minimising does on X11),
#   3. for comparison, a window whose orbs rest because the desktop turned animations off.
#   bash bench/orbs_cpu.sh [seconds]
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/env.sh
ovel_headless_env
export OVEL_BENCH_SECONDS="${1:-10}"

# Runs one browser and prints the CPU figures of the cases named: "shown", "shown unmapped".
measure_browser() {
  local animations=$1 cases=$2 profile
  profile=$(mktemp -d)
  mkdir -p "$profile/home" "$profile/config/gtk-4.0" "$profile/data" "$profile/cache"
  printf '[Settings]\ngtk-enable-animations=%s\n' "$animations" \
    > "$profile/config/gtk-4.0/settings.ini"
  HOME="$profile/home" XDG_CONFIG_HOME="$profile/config" XDG_DATA_HOME="$profile/data" \
    XDG_CACHE_HOME="$profile/cache" OVEL_BENCH_CASES="$cases" \
    xvfb-run -a -s "-screen 0 1200x780x24" dbus-run-session -- bash -c '
      ticks() { awk "{ print \$14 + \$15 }" "/proc/$1/stat"; }
      measure() {
        local before after
        before=$(ticks "$browser")
        sleep "$OVEL_BENCH_SECONDS"
        after=$(ticks "$browser")
        awk -v t=$((after - before)) -v hz="$(getconf CLK_TCK)" -v s="$OVEL_BENCH_SECONDS" \
          "BEGIN { printf \"%.1f\", 100 * t / hz / s }"
      }
      build/ovel-web >/dev/null 2>&1 &
      browser=$!
      sleep 6
      window=$(xdotool search --sync --name "^Ovel Web$" | head -1)
      for case in $OVEL_BENCH_CASES; do
        if [[ $case == unmapped ]]; then
          xdotool windowunmap "$window"
          sleep 2
        fi
        echo "$case $(measure)"
      done
      kill "$browser"
      wait "$browser" 2>/dev/null || true
    ' 2>/dev/null | grep -E "^(shown|unmapped) "
  rm -rf "$profile"
}

echo "ovel-web UI process, ${OVEL_BENCH_SECONDS} s per case, GSK_RENDERER=$GSK_RENDERER, $(nproc) cores, load $(cut -d' ' -f1 /proc/loadavg)"
measure_browser 1 "shown unmapped" | while read -r case cpu; do
  if [[ $case == shown ]]; then
    echo "  window shown, orbs breathing:    $cpu % of one core"
  else
    echo "  window unmapped:                 $cpu % of one core"
  fi
done
measure_browser 0 "shown" | while read -r case cpu; do
  echo "  window shown, animations off:    $cpu % of one core (orbs resting)"
done
