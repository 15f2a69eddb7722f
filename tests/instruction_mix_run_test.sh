#!/bin/sh
# tools/instruction-mix.sh --run counts the path one call executes.  Where a
# body has a twin for unaligned arrays, its own function holds the aligned
# path alone, so the executed arithmetic is all the function's arithmetic;
# where it has none, the call runs part of the function and counts less.
# Skipped (exit 77) without valgrind.
set -eu
tool=$1
library=$2
command -v valgrind >/dev/null 2>&1 || { echo "valgrind not installed"; exit 77; }
regex='^u8_.*DFT(Fwd|Inv)_CToC_(7|24|32|64)_(32|64)fc(_unaligned)?$'
static=$(sh "$tool" "$library" "$regex")
executed=$(sh "$tool" --run "$library" "$regex")
twins=$(printf '%s\n' "$static" | awk -F'\t' '$1 ~ /_unaligned$/ { sub(/^u8_owng/, "u8_tvkg", $1); sub(/_unaligned$/, "", $1); print $1 }')
printf '%s\n' "$static" | awk -F'\t' 'NR > 1 && $1 !~ /_unaligned$/ { print $1 }' | {
    status=0
    count=0
    twinned=0
    while read -r name; do
        count=$((count + 1))
        s=$(printf '%s\n' "$static" | awk -F'\t' -v n="$name" '$1 == n')
        e=$(printf '%s\n' "$executed" | awk -F'\t' -v n="$name" '$1 == n')
        [ -n "$e" ] || { echo "no executed line for $name"; status=1; continue; }
        if printf '%s\n' "$twins" | grep -qx "$name"; then
            twinned=$((twinned + 1))
            printf '%s\n%s\n' "$s" "$e" | awk -F'\t' 'NR == 1 { a = $4 } NR == 2 { exit !($4 == a && $4 > 0) }' ||
                { echo "aligned path of $name: arithmetic $e against $s"; status=1; }
        else
            printf '%s\n%s\n' "$s" "$e" | awk -F'\t' 'NR == 1 { t = $2 } NR == 2 { exit !($2 < t && $4 > 0) }' ||
                { echo "one path of $name not less than the function: $e against $s"; status=1; }
        fi
    done
    [ $count -eq 16 ] || { echo "expected 16 bodies, saw $count"; status=1; }
    [ $twinned -gt 0 ] && [ $twinned -lt $count ] || { echo "expected bodies with and without a twin, $twinned of $count have one"; status=1; }
    exit $status
}
