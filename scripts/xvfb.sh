#!/usr/bin/env bash
# Runs a command under its own Xvfb server. -noreset keeps the server up when
# its last client disconnects: without it, a test process that connects while
# the server resets itself is refused ("could not connect to display").
# A DISPLAY that is already set is used as it is.
set -euo pipefail
if [ -n "${DISPLAY:-}" ]; then
  exec "$@"
fi
exec xvfb-run -a -s "-noreset -screen 0 1920x1080x24" "$@"
