#!/bin/sh
# Runs the example exchange with the Python client (python/examples/exchange_client.py) in place of the
# C++ one: the client in the background, exchange_solver in the foreground, meeting in a fresh temporary
# exchange directory that is removed afterwards.
# Usage: run_exchange_python.sh <build directory> [options for both sides, e.g. --mode Sequential]
# The build directory holds examples/exchange_solver and the package python/ombrix. Options for one side
# only go in SOLVER_ARGS and CLIENT_ARGS; PYTHON names the interpreter (by default /usr/bin/python3,
# which has Debian's numpy, when it exists).
set -u
build=$1
shift
source_dir=$(cd "$(dirname "$0")/.." && pwd)
if [ -z "${PYTHON:-}" ]; then
  if [ -x /usr/bin/python3 ]; then PYTHON=/usr/bin/python3; else PYTHON=python3; fi
fi
dir=$(mktemp -d "${TMPDIR:-/tmp}/ombrix-exchange.XXXXXX") || exit 1
trap 'rm -rf "$dir"' EXIT INT TERM
echo "exchange directory: $dir"
# shellcheck disable=SC2086 # the one-side options are meant to split into words
PYTHONPATH="$build/python${PYTHONPATH:+:$PYTHONPATH}" "$PYTHON" "$source_dir/python/examples/exchange_client.py" \
  --dir "$dir" "$@" ${CLIENT_ARGS:-} >"$dir/client.log" 2>&1 &
client=$!
# shellcheck disable=SC2086
"$build/examples/exchange_solver" --dir "$dir" "$@" ${SOLVER_ARGS:-}
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
