#!/bin/sh
# tools/instruction-mix.sh on the built library: every complex DFT body has
# its line with arithmetic and stores counted, in both types, its arithmetic
# split whole into additions and multiplications, and a port estimate of at
# least a third of its arithmetic; the split tvk32fc bodies (lengths 6 to
# 64), which regroup lanes between passes, show shuffles too, among them the
# unpacks of their outputs, which are half moves.
set -eu
tool=$1
library=$2
mix=$(sh "$tool" "$library")
status=0
for direction in Fwd Inv; do
    for type in 32fc 64fc; do
        n=2
        while [ $n -le 64 ]; do
            name=u8_tvkgDFT${direction}_CToC_${n}_${type}
            line=$(printf '%s\n' "$mix" | awk -F'\t' -v name="$name" '$1 == name')
            if [ -z "$line" ]; then
                echo "no line for $name"
                status=1
            else
                lanes=$([ "$type" = 32fc ] && [ $n -ge 6 ] && echo 1 || echo 0)
                echo "$line" | awk -F'\t' -v lanes="$lanes" '$4 > 0 && $7 > 0 && $10 + $11 == $4 && $13 >= $4 / 3 && (($3 > 0 && $12 > 0) || !lanes) { ok = 1 } END { exit !ok }' ||
                    { echo "arithmetic, stores or the port estimate not counted, or no shuffles in a split body: $line"; status=1; }
            fi
            n=$((n + 1))
        done
    done
done
exit $status
