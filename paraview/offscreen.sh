#!/usr/bin/env bash
# Runs a command with an X server in memory, for rendering where there is no
# display. Xvfb picks a free display number itself (-displayfd) and reports
# it once it accepts clients, so runs side by side never meet on one server
# and nothing starts before the server is up. On a heavily loaded machine
# a client's connection to the server is now and then refused, which VTK
# answers with an abort (status 134); such a run is tried again, up to
# three times in all.
#
#   paraview/offscreen.sh pvpython --force-offscreen-rendering SCRIPT ARGS...
set -euo pipefail

ready=$(mktemp -d)
mkfifo "$ready/display"
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$ready/display" 2>"$ready/log" &
server=$!
trap 'kill "$server" 2>/dev/null || true; wait "$server" 2>/dev/null || true; rm -rf "$ready"' EXIT
if ! read -r display <"$ready/display"; then
  echo "offscreen.sh: Xvfb did not start:" >&2
  cat "$ready/log" >&2
  exit 1
fi
for attempt in 1 2 3; do
  status=0
  DISPLAY=":$display" "$@" || status=$?
  [ "$status" -eq 134 ] || exit "$status"
  echo "offscreen.sh: aborted (try $attempt of 3), likely a refused X connection" >&2
done
exit "$status"
