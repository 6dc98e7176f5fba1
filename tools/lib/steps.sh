# Sourced by the commands: where things are, and how a step runs, reports and ends.
set -euo pipefail

top=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
build=$top/build
logs=$build/logs
mkdir -p "$logs"

fail() {
  printf '%s: %s\n' "$(basename "$0")" "$1" >&2
  exit 1
}

# Two commands at once would build into each other's files. The lock's descriptor is closed in what
# the command starts (-o), so that a lingering wineserver cannot hold it.
one_at_a_time() {
  [[ ${VELORA_LOCKED:-} != "$build" ]] || return 0
  flock -n "$build/lock" true || echo "Another command is at work in $build: waiting for it."
  exec env VELORA_LOCKED="$build" flock -o "$build/lock" "$0" "$@"
}

# attempt NAME TEXT COMMAND...: runs a command or a function, announced by the text, with its output
# in build/logs/NAME.log, and leaves its exit status in attempt_status. After a failure it shows the
# end of the log and what failed.
attempt() {
  local log=$logs/$1.log text=$2 start=$SECONDS
  shift 2
  printf '%s ... ' "$text"
  set +e # With "if" or "||" instead, -e would have no effect inside the function.
  (
    set -e
    "$@"
  ) >"$log" 2>&1 </dev/null
  attempt_status=$?
  set -e
  if ((attempt_status == 0)); then
    printf '%d s\n' $((SECONDS - start))
    return
  fi
  printf 'FAILED\n'
  {
    tail -n 40 "$log"
    printf '%s: failed: %s (status %d). The whole log: %s\n' \
      "$(basename "$0")" "$text" "$attempt_status" "$log"
  } >&2
}

# As attempt; a failure ends the command.
step() {
  attempt "$@"
  ((attempt_status == 0)) || exit "$attempt_status"
}
