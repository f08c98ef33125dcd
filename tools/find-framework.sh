#!/usr/bin/env bash
# Prints the newest Microsoft.NETCore.App shared framework the SDK carries:
#   dir  -> its folder;  name -> the runtime folder name we stage it under (netcore<major>.<minor>)
set -euo pipefail
line=$(dotnet --list-runtimes | awk '$1 == "Microsoft.NETCore.App" { print $2, $3 }' | sort -V | tail -n 1)
ver=${line%% *}
base=${line#* }; base=${base#[}; base=${base%]}
case "${1:-dir}" in
  dir)  echo "$base/$ver" ;;
  name) IFS=. read -r major minor _ <<<"$ver"; echo "netcore$major.$minor" ;;
  *)    echo "usage: $0 dir|name" >&2; exit 2 ;;
esac
