#!/usr/bin/env bash
# Links the shared framework's files into our runtime folder, beside the wrapper library
# that the native build already put there. Links, not copies: the framework is ~70 MB.
set -euo pipefail
src=$1 dst=$2
[ -f "$src/libcoreclr.so" ] || { echo "no libcoreclr.so in '$src'" >&2; exit 1; }
mkdir -p "$dst"
for f in "$src"/*; do
  ln -sfn "$f" "$dst/$(basename "$f")"
done
[ -f "$dst/libquorix.embed.coreclrwrap.so" ] || { echo "wrapper library missing in '$dst'" >&2; exit 1; }
