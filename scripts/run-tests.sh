#!/usr/bin/env bash
# Builds everything and runs every test: unit, golden command-line, corpus
# smoke and table regeneration tests, then the same suite under
# AddressSanitizer and UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
jobs="$(nproc)"

cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j"$jobs"
ctest --test-dir build --output-on-failure -j"$jobs"

if [ "${VESK_SKIP_SANITIZERS:-0}" != "1" ]; then
  cmake -S . -B build-sanitize -G Ninja -DCMAKE_BUILD_TYPE=Debug -DVESK_SANITIZE=ON \
    -DVESK_BUILD_BENCH=OFF >/dev/null
  cmake --build build-sanitize -j"$jobs"
  ctest --test-dir build-sanitize --output-on-failure -j"$jobs"
fi
