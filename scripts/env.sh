# Shared by scripts/run and scripts/test: how to run windows on a machine without a display.
# Sourced, not run.

# Without a GPU, GTK's GL renderer falls back to slow software GL and WebKit's DMA-BUF
# renderer costs memory for nothing.
ovel_headless_env() {
  export GSK_RENDERER=cairo
  # GTK draws with cairo here, so it has no use for GL: without this it still loads Mesa's
  # software driver, which keeps allocations past exit that the sanitizer runs report as leaks.
  export GDK_DEBUG=gl-disable
  export WEBKIT_DISABLE_DMABUF_RENDERER=1
  export LIBGL_ALWAYS_SOFTWARE=1
  export NO_AT_BRIDGE=1
}

ovel_has_display() {
  [[ -n "${DISPLAY:-}" || -n "${WAYLAND_DISPLAY:-}" ]]
}

ovel_build() {
  local dir=$1
  shift
  if [[ ! -f "$dir/build.ninja" ]]; then
    cmake -S . -B "$dir" -G Ninja "$@" >/dev/null
  fi
  cmake --build "$dir"
}
