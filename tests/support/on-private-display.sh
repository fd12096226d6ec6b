#!/usr/bin/env bash
# Runs a command on an X server of its own, exits with the command's status, and ends the server.
# The server picks a free display itself (-displayfd), so runs side by side never race for a
# number, and no authority file or folder is made that a clean-up could fail to remove.
#   tests/support/on-private-display.sh COMMAND [ARGUMENT...]
set -u
unset QT_QPA_PLATFORM WAYLAND_DISPLAY XAUTHORITY
exec {display_fd}< <(exec Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>&1 >/dev/null 2>&1)
server=$!
trap 'kill "$server" 2>/dev/null' EXIT
if ! read -r -t 30 -u "$display_fd" number; then
    echo "on-private-display: no X server within 30 s" >&2
    exit 69
fi
exec {display_fd}<&-
DISPLAY=":$number" "$@"
status=$?
kill "$server" 2>/dev/null
wait "$server" 2>/dev/null
trap - EXIT
exit "$status"
