#!/bin/sh
# The instruction mix of each Codelet in a built library, from its object
# code: shuffles (which issue on one port only on Intel cores), arithmetic,
# sign flips, loads, stores and register copies.  It shows what a change to
# a back-end does to a body without timing it.
#
#   tools/instruction-mix.sh LIBRARY [REGEX]
#
# One line per function whose name matches REGEX (default: the bodies of
# every complex DFT Codelet), tab-separated, with a header.  The function u8_<Codelet> holds
# the aligned path, and the unaligned one too when the body has no twin; the
# twin u8_owng..._unaligned is a line of its own.
set -eu
lib=${1:?usage: instruction-mix.sh LIBRARY [REGEX]}
regex=${2:-^u8_.*DFT(Fwd|Inv)_CToC_[0-9]+_(32|64)fc}

objdump -d --no-show-raw-insn "$lib" | awk -v regex="$regex" '
function flush() {
    if (name != "")
        printf "%s\t%d\t%d\t%d\t%d\t%d\t%d\t%d\t%d\n", name, total, shuffles, arith, signs, loads, stores, copies, total - shuffles - arith - signs - loads - stores - copies
    name = ""
}
BEGIN {
    print "function\ttotal\tshuffles\tarithmetic\tsigns\tloads\tstores\tcopies\tother"
    split("shufps unpcklps unpckhps movlhps movhlps pshufd movsldup movshdup shufpd unpcklpd unpckhpd movddup palignr pshufb", s, " ")
    for (i in s) shuffle[s[i]] = 1
    split("add sub mul addsub hadd hsub div", a, " ")
    for (i in a) for (t = 0; t < 4; ++t) arithmetic[a[i] substr("pssspdsd", 2 * t + 1, 2)] = 1
    split("xorps xorpd andps andpd andnps andnpd orps orpd pxor", x, " ")
    for (i in x) sign[x[i]] = 1
    split("movaps movapd movups movupd movlps movhps movlpd movhpd movss movsd movq movd movdqa movdqu lddqu", m, " ")
    for (i in m) move[m[i]] = 1
}
/^[0-9a-f]+ <.*>:$/ {
    flush()
    fn = $2
    gsub(/[<>:]/, "", fn)
    if (fn ~ regex) { name = fn; total = shuffles = arith = signs = loads = stores = copies = 0 }
    next
}
name != "" && /^ +[0-9a-f]+:\t/ {
    split($0, field, "\t")
    n = split(field[2], word, " ")
    op = word[1]
    if (op == "" || op ~ /^(nop|data16|cs|int3)/) next
    ++total
    if (op in shuffle) ++shuffles
    else if (op in arithmetic) ++arith
    else if (op in sign) ++signs
    else if (op in move) {
        k = split(word[2], operand, ",")
        if (operand[k] ~ /\(/) ++stores
        else if (word[2] ~ /\(/) ++loads
        else ++copies
    }
}
END { flush() }'
