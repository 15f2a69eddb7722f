#!/bin/sh
# The tvk64fc split-radix bodies swap halves once per L butterfly, for the
# pair a + i b, a - i b together with its two rotations, and nowhere else:
# not for products by +-i, nor at the stores.  swaps(N) = N/4 + swaps(N/2)
# + 2 swaps(N/4), counted in the generated text of both directions.
set -eu
sources=$1
swaps() {
    case $1 in
        1 | 2) echo 0 ;;
        *) echo $(($1 / 4 + $(swaps $(($1 / 2))) + 2 * $(swaps $(($1 / 4))))) ;;
    esac
}
status=0
for direction in Fwd Inv; do
    for n in 4 8 16 32 64; do
        name=tvkgDFT${direction}_CToC_${n}_64fc
        counted=$(cat "$sources"/*64fc*.cpp | awk -v head="// $name:" '
            index($0, head) == 1 { inside = 1 }
            inside && /tvk::swapHalves\(/ { ++swaps }
            inside && /^}  \/\/ namespace/ { inside = 0 }
            END { print swaps + 0 }')
        expected=$(swaps $n)
        [ "$counted" -eq "$expected" ] || { echo "$name: $counted swaps, expected $expected"; status=1; }
    done
done
exit $status
