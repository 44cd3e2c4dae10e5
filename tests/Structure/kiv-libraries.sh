#!/usr/bin/env bash
# The command line program must start in milliseconds on a machine without a screen: no window library may come with it.
set -euo pipefail
libraries="$(ldd "$1")"
grep -q 'libc\.so' <<<"$libraries" || { echo "ldd said nothing of use: $libraries"; exit 1; }
if grep -Ei 'libqt|libx11|libxcb|libwayland|libgl' <<<"$libraries"; then
  echo "$1 links a window library"
  exit 1
fi
