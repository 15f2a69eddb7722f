#!/bin/sh
# The instruction mix of each Codelet in a built library, from its object
# code: shuffles, arithmetic, sign flips, loads, stores and register copies,
# and the least cycles that mix needs on the vector ports of an Intel core of
# this library's test machine.  It shows what a change to a back-end does to
# a body without timing it.
#
# The port model, measured there with independent instructions: additions
# and the immediate shuffles (shufps, shufpd, pshufd, and movddup between
# registers; a shufps from memory is a load and such a shuffle) share two
# ports, 2 per cycle together; multiplications have two ports, one of them
# shared with the additions; unpacks, moves of 64-bit halves between
# registers and the 8-byte loads into one half of a register (movhps,
# movlps, ...) run on one of the addition ports alone; a conversion between
# single and double is two operations, one on an addition port and one on a
# multiplication port, and issues once a cycle; sign masks go to any of the
# three; movddup, movsldup and movshdup from memory are plain loads.  So a
# shuffle costs what an addition costs, and `cycles` is
# the largest of (A + S + H + C)/2, (M + C)/2, H, C and
# (A + S + H + M + 2C)/3 for A additions, S immediate shuffles, H half moves,
# C conversions and M multiplications; loads, stores and copies have ports
# of their own.
#
#   tools/instruction-mix.sh [--run] LIBRARY [REGEX]
#
# One line per function whose name matches REGEX (default: the bodies of
# every complex DFT Codelet), tab-separated, with a header.  The function u8_<Codelet> holds
# the aligned path, and the unaligned one too when the body has no twin; the
# twin u8_owng..._unaligned is a line of its own.
#
# With --run, only the instructions that one call of each Codelet executes
# are counted, as the benchmarks call it: 64-byte aligned arrays, ScaleNoDiv
# (valgrind's callgrind records the addresses).  It calls Codelets of the
# form (source, destination, flag): the complex and real DFT and Hartley.  The two paths of a body
# without a twin share code, so half its static count is only an estimate
# of one path; this is the path itself.
set -eu
run=0
if [ "${1:-}" = --run ]; then run=1; shift; fi
lib=${1:?usage: instruction-mix.sh [--run] LIBRARY [REGEX]}
regex=${2:-^u8_.*DFT(Fwd|Inv)_CToC_[0-9]+_(32|64)fc}

executed=/dev/null
if [ $run = 1 ]; then
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
    cat >"$work/call.c" <<'EOF'
#include <dlfcn.h>
#include <stdlib.h>
#include <string.h>
/* Calls each named Codelet once: source and destination 64-byte aligned, ScaleNoDiv. */
typedef int (*Codelet)(const void*, void*, int);
int main(int argc, char** argv) {
    void* lib = dlopen(argv[1], RTLD_NOW);
    char* mem = aligned_alloc(64, 8192);
    if (!lib || !mem) return 1;
    memset(mem, 0, 8192);
    for (int a = 2; a < argc; ++a) {
        Codelet f = (Codelet)dlsym(lib, argv[a]);
        if (f) f(mem, mem + 4096, 8);
    }
    return 0;
}
EOF
    cc -O2 -o "$work/call" "$work/call.c" -ldl
    names=$(nm -D --defined-only "$lib" | awk -v regex="$regex" '{ if (("u8_" $3) ~ regex) print $3 }')
    # shellcheck disable=SC2086
    valgrind -q --tool=callgrind --dump-instr=yes --compress-pos=no --compress-strings=no \
        --callgrind-out-file="$work/calls" "$work/call" "$lib" $names
    real=$(readlink -f "$lib")
    # Addresses as objdump writes them: lowercase hex without 0x.
    awk -v lib="$real" '/^ob=/ { inlib = substr($0, 4) == lib } inlib && /^0x/ && $3 > 0 { print substr($1, 3) }' \
        "$work/calls" >"$work/executed"
    executed=$work/executed
fi

objdump -d --no-show-raw-insn "$lib" | awk -v regex="$regex" -v run=$run -v executed="$executed" '
function flush() {
    if (name != "" && (total > 0 || !run))
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
    while ((getline line < executed) > 0) ran[line] = 1
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
    if (run) {
        address = field[1]
        gsub(/[ :]/, "", address)
        if (!(address in ran)) next
    }
    n = split(field[2], word, " ")
    op = word[1]
    if (op == "" || op ~ /^(nop|data16|cs|int3)/) next
    ++total
    if (op ~ /^cvt/) ++conversions
    if (op in shuffle) {
        ++shuffles
        if (op in half) ++halves
        else if (word[2] !~ /\(/ || op !~ /^mov/) ++immediate
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
