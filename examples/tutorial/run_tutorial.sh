#!/bin/sh
# Runs the tutorial's exchange: the client in the background, the solver in the foreground, in a fresh
# exchange directory. Usage: run_tutorial.sh <directory holding tutorial_solver and tutorial_client>
set -u
bin=${1:?usage: run_tutorial.sh <directory of the tutorial programs>}
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
"$bin/tutorial_client" "$dir" &
client=$!
"$bin/tutorial_solver" "$dir"
solver=$?
wait $client
client=$?
echo "solver exit $solver, client exit $client"
[ $solver -eq 0 ] && [ $client -eq 0 ]
