#!/usr/bin/env bash
# The browser against the engine floor, under Xvfb as the tests run (see the program's header):
#   bash bench/against_floor.sh [startup|memory|cpu|related|all] [runs]
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/env.sh
ovel_headless_env
nice cmake --build build --target bench_against_floor >/dev/null
exec xvfb-run -a -s "-screen 0 1600x1000x24" dbus-run-session -- \
  build/bench/bench_against_floor "$@" 2>/dev/null
