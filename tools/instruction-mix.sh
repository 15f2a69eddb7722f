#!/bin/sh
# The instruction mix of each Codelet in a built library, from its object
# code: shuffles, arithmetic, sign flips, loads, stores and register copies,
# and the least cycles that mix needs on the vector ports of an Intel core of
# this library's test machine.  It shows what a change to a back-end does to
# a body without timing it.
#
# The port model, measured there with independent instructions: additions
# and the immediate shuffles (shufps, shufpd, pshufd, movddup between
# registers) share two ports, 2 per cycle together; multiplications have two
# ports, one of them shared with the additions; unpacks, moves of 64-bit
# halves between registers and the 8-byte loads into one half of a register
# (movhps, movlps, ...) run on one of the addition ports alone; a conversion
# between single and double is two operations, one on an addition port and
# one on a multiplication port, and issues once a cycle; sign masks go to any
# of the three.  So a shuffle costs what an addition costs, and `cycles` is
# the largest of (A + S + H + C)/2, (M + C)/2, H, C and
# (A + S + H + M + 2C)/3 for A additions, S immediate shuffles, H half moves,
# C conversions and M multiplications; loads, stores and copies have ports
# of their own.
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
        printf "%s\t%d\t%d\t%d\t%d\t%d\t%d\t%d\t%d\t%d\t%d\t%d\t%.1f\n", name, total, shuffles, arith, signs, loads, stores, copies, total - shuffles - arith - signs - loads - stores - copies, adds, muls, halves, cycles()
    name = ""
}
function cycles(   shared, c) {
    shared = adds + immediate + halves + conversions
    c = shared / 2
    if ((muls + conversions) / 2 > c) c = (muls + conversions) / 2
    if (halves > c) c = halves
    if (conversions > c) c = conversions
    if ((shared + muls + conversions) / 3 > c) c = (shared + muls + conversions) / 3
    return c
}
BEGIN {
    print "function\ttotal\tshuffles\tarithmetic\tsigns\tloads\tstores\tcopies\tother\tadditions\tmultiplications\thalf_moves\tcycles"
    split("shufps unpcklps unpckhps movlhps movhlps pshufd movsldup movshdup shufpd unpcklpd unpckhpd movddup palignr pshufb", s, " ")
    for (i in s) shuffle[s[i]] = 1
    split("unpcklps unpckhps movlhps movhlps unpcklpd unpckhpd", h, " ")
    for (i in h) half[h[i]] = 1
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
    if (fn ~ regex) { name = fn; total = shuffles = arith = signs = loads = stores = copies = adds = muls = immediate = halves = conversions = 0 }
    next
}
name != "" && /^ +[0-9a-f]+:\t/ {
    split($0, field, "\t")
    n = split(field[2], word, " ")
    op = word[1]
    if (op == "" || op ~ /^(nop|data16|cs|int3)/) next
    ++total
    if (op ~ /^cvt/) ++conversions
    if (op in shuffle) {
        ++shuffles
        if (op in half) ++halves
        else if (word[2] !~ /\(/) ++immediate
    }
    else if (op in arithmetic) {
        ++arith
        if (op ~ /^(mul|div)/) ++muls
        else ++adds
    }
    else if (op in sign) ++signs
    else if (op in move) {
        k = split(word[2], operand, ",")
        if (operand[k] ~ /\(/) ++stores
        else if (word[2] ~ /\(/) {
            ++loads
            if (op ~ /^mov[lh]p[sd]$/) ++halves
        }
        else ++copies
    }
}
END { flush() }'
