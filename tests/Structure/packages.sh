#!/usr/bin/env bash
# Every package named in packaging/debian-packages.txt is one that Debian has, once.
set -euo pipefail
list="$1/packaging/debian-packages.txt"
names="$(grep -v '^#' "$list" | sed '/^$/d')"
[ "$(wc -l <<<"$names")" -gt 20 ] || { echo "too few packages: $names"; exit 1; }
twice="$(sort <<<"$names" | uniq -d)"
[ -z "$twice" ] || { echo "named twice: $twice"; exit 1; }
while read -r name; do
  dpkg-query -W "$name" >/dev/null 2>&1 || apt-cache show "$name" >/dev/null 2>&1 || { echo "Debian has no $name"; exit 1; }
done <<<"$names"
