#!/bin/sh
# break-generic-stubs.sh <generated cs folder> <output folder>
# Copies the generated managed stubs and removes two stubs of generic instantiations, so a
# test assembly shows how binding failures of generic kinds reach Python.
set -eu
src=$1
out=$2
rm -rf "$out"
mkdir -p "$out"
cp "$src"/*.cs "$out"/
# The stub line follows its [UnmanagedCallersOnly] attribute: both go.
drop() {
    file=$(grep -l "public static unsafe class $1\$" "$out"/*.cs)
    sed -i "/^    \[UnmanagedCallersOnly\]\$/{N;/ $2(/d}" "$file"
    ! grep -q " $2(" "$file" || { echo "break-generic-stubs: $2 still in $file" >&2; exit 1; }
}
drop "SiApiArray_$(sed -n 's/^generic \([0-9A-F]*\) Quorix.Folio.Paragraph .*/\1/p' "$src/../model.txt")" SqSetItemNoChek
drop "SiApiEnumerable_$(sed -n 's/^generic \([0-9A-F]*\) Quorix.Folio.Run .*/\1/p' "$src/../model.txt")" GetEnumerator
