#!/bin/sh
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# usage: ci.sh BUILD       (where vym-sim and the application were built)
dir=$(mktemp -d)
"$1/sim/vym-sim" --dir "$dir" --time virtual --script docs/snippets/search.vym > "$dir/out" &
sim=$!
until grep -qs '^vym-sim: listening on ' "$dir/out"; do
    kill -0 "$sim" || exit 1
    sleep 0.1
done
"$1/docs/snippets/nearby" "$dir" || exit 1 # what the application finds
wait "$sim" || exit 1                      # what the server saw
rm -r "$dir"
