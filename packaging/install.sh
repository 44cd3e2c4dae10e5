#!/usr/bin/env bash
# Installs the Debian packages of the named sections of debian-packages.txt (build, run, test) that are missing. Says nothing
# and needs no rights when none is.
set -euo pipefail
list="$(dirname "$0")/debian-packages.txt"

wanted=()
for section in "$@"; do
  while read -r name; do wanted+=("$name"); done < <(awk -v s="# $section" '/^#/ { on = ($0 == s); next } on && NF' "$list")
done
missing=()
for name in "${wanted[@]}"; do
  [ "$(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null)" = installed ] || missing+=("$name")
done
[ ${#missing[@]} -gt 0 ] || exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null; then
    echo "These packages are missing, and only root can install them:" >&2
    echo "  apt-get install --no-install-recommends ${missing[*]}" >&2
    exit 1
  fi
  as_root=(sudo)
fi
echo "Installing ${#missing[@]} packages: ${missing[*]}" >&2
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq >&2
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
