#!/usr/bin/env bash
# Checks the instruction encodings of the library's objects:
#  - the AVX2 unit holds no legacy-encoded SSE instruction (every instruction on XMM registers carries the
#    VEX prefix, so none of its paths pays the AVX-to-SSE transition), does use YMM registers and clears
#    their upper halves (vzeroupper), and defines no weak symbol (an AVX2 copy of an inline function could
#    otherwise stand in for the copy other units call on CPUs without AVX2);
#  - every other object of the library uses no YMM register at all.
# Usage: check-simd-encoding.sh <AVX2 objects, ':'-separated> <library objects, ':'-separated>
set -euo pipefail

IFS=: read -ra avx2 <<< "$1"
IFS=: read -ra objects <<< "$2"
status=0

disassemble() {
    # One instruction a line, without addresses: "mnemonic operands".
    objdump -d --no-show-raw-insn "$1" | awk -F'\t' '/^ *[0-9a-f]+:\t/ { print $2 }'
}

for o in "${avx2[@]}"; do
    code=$(disassemble "$o")
    legacy=$(awk '/%xmm/ && $1 !~ /^v/' <<< "$code" | sort | uniq -c | sort -rn | head -20 || true)
    if [[ -n "$legacy" ]]; then
        echo "FAIL: legacy-encoded SSE in the AVX2 unit $(basename "$o"):"
        echo "$legacy"
        status=1
    fi
    if ! grep -q '%ymm' <<< "$code"; then
        echo "FAIL: $(basename "$o") uses no YMM register: not built for AVX2?"
        status=1
    fi
    if ! grep -q '^vzeroupper' <<< "$code"; then
        echo "FAIL: $(basename "$o") never clears the upper YMM halves"
        status=1
    fi
    weak=$(nm -C "$o" | awk '$(NF-1) ~ /^[WVu]$/ || $1 ~ /^[WVu]$/' || true)
    if [[ -n "$weak" ]]; then
        echo "FAIL: weak symbols in the AVX2 unit $(basename "$o"):"
        echo "$weak"
        status=1
    fi
done

checked=0
for o in "${objects[@]}"; do
    for a in "${avx2[@]}"; do
        [[ "$o" == "$a" ]] && continue 2
    done
    checked=$((checked + 1))
    if disassemble "$o" | grep -q '%ymm'; then
        echo "FAIL: $(basename "$o") uses YMM registers outside the AVX2 unit:"
        disassemble "$o" | grep '%ymm' | head -5
        status=1
    fi
done
if [[ $checked -lt 10 ]]; then
    echo "FAIL: only $checked library objects to check"
    status=1
fi

[[ $status -eq 0 ]] && echo "ok: ${#avx2[@]} AVX2 object(s) VEX-only, $checked other objects without YMM"
exit $status
