#!/bin/sh
# Runs the example exchange end to end: exchange_client in the background and exchange_solver in the
# foreground, meeting in a fresh temporary exchange directory that is removed afterwards.
# Usage: run_exchange.sh <directory of the programs> [options for both sides, e.g. --mode Sequential]
# Options for one side only go in SOLVER_ARGS and CLIENT_ARGS, e.g. SOLVER_ARGS="--steps 10".
set -u
bin=$1
shift
dir=$(mktemp -d "${TMPDIR:-/tmp}/ombrix-exchange.XXXXXX") || exit 1
trap 'rm -rf "$dir"' EXIT INT TERM
echo "exchange directory: $dir"
# shellcheck disable=SC2086 # the one-side options are meant to split into words
"$bin/exchange_client" --dir "$dir" "$@" ${CLIENT_ARGS:-} >"$dir/client.log" 2>&1 &
client=$!
# shellcheck disable=SC2086
"$bin/exchange_solver" --dir "$dir" "$@" ${SOLVER_ARGS:-}
solver_status=$?
# A refused command line (exit 1) means the solver never started: do not let the client wait for it.
if [ "$solver_status" -eq 1 ]; then
  kill "$client" 2>/dev/null
fi
wait "$client"
client_status=$?
cat "$dir/client.log"
if [ "$solver_status" -ne 0 ] || [ "$client_status" -ne 0 ]; then
  echo "example exchange FAILED (solver exit $solver_status, client exit $client_status)" >&2
  exit 1
fi
echo "example exchange completed"
