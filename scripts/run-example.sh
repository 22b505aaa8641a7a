#!/usr/bin/env bash
# Builds vesk and analyses the bundled example listing.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build --target vesk -j"$(nproc)"
example=examples/loop.isa
echo "== vesk analyse-liveness $example -"
build/vesk analyse-liveness "$example" -
echo "== vesk stall-cycles $example -"
build/vesk stall-cycles "$example" -
echo "== vesk summary $example -"
build/vesk summary "$example" -
