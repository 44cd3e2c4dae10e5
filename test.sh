#!/usr/bin/env bash
# Builds and runs all tests: ./test.sh [PRESET …], by default the preset dev. Presets: dev release asan tsan.
set -euo pipefail
cd "$(dirname "$0")"
packaging/install.sh build run test
# What was compiled in one clone serves the next.
export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1
for preset in "${@:-dev}"; do
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset" -j2
done
