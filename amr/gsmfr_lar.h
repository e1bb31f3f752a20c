// GSM 06.10 4.2.8 and 4.2.9: decoding of the coded log-area ratios and their
// interpolation into the four reflection-coefficient sets of a frame, shared
// by the short-term analysis filter (encoder) and synthesis filter (decoder).
// LARpp and LARp are Q14 of the real log-area ratios (16384 = 1.0), rp is Q15.
#pragma once

#include <cstring>

#include "amr/gsmfr_tables.h"
#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT
namespace gsmfr {

/// Left shift of a 32-bit value keeping the low 32 bits (the standard's
/// "<<" where its bounds exclude overflow).
inline Word32 shl_wrap(Word32 v, int n) { return static_cast<Word32>(static_cast<std::uint32_t>(v) << n); }

/// True when every LARc code lies in 0..MAC[i] - MIC[i].
inline bool lar_codes_valid(const Word16* LARc) {
    for (int i = 0; i < 8; ++i)
        if (LARc[i] < 0 || LARc[i] > gsmfr_MAC[i] - gsmfr_MIC[i]) return false;
    return true;
}

/// 4.2.8: LARpp[i] = 2 x INVA[i] x ((LARc[i] + MIC[i]) x 1024 - 2 B[i]).
inline void decode_lar(const Word16* LARc, Word16* LARpp) {
    for (int i = 0; i < 8; ++i) {
        Word16 t = static_cast<Word16>(add(LARc[i], gsmfr_MIC[i]) << 10);
        t = sub(t, static_cast<Word16>(gsmfr_B[i] * 2));
        t = mult_r(gsmfr_INVA[i], t);
        LARpp[i] = add(t, t);
    }
}

/// 4.2.9.1: the LARp of segment seg (0..3) from the previous and the
/// current frame's LARpp.
inline void interpolate_lar(int seg, const Word16* prev, const Word16* cur, Word16* LARp) {
    for (int i = 0; i < 8; ++i) {
        switch (seg) {
            case 0: LARp[i] = add(add(shr(prev[i], 2), shr(cur[i], 2)), shr(prev[i], 1)); break;
            case 1: LARp[i] = add(shr(prev[i], 1), shr(cur[i], 1)); break;
            case 2: LARp[i] = add(add(shr(prev[i], 2), shr(cur[i], 2)), shr(cur[i], 1)); break;
            default: LARp[i] = cur[i]; break;
        }
    }
}

/// 4.2.9.2: reflection coefficient of one interpolated LAR (piecewise-linear
/// inverse of the 4.2.6 approximation).
inline Word16 lar_to_rp(Word16 lar) {
    const Word16 t = abs_s(lar);
    const Word16 m = t < 11059 ? static_cast<Word16>(t << 1) : t < 20070 ? static_cast<Word16>(t + 11059)
                                                                          : add(static_cast<Word16>(t >> 2), 26112);
    return lar < 0 ? static_cast<Word16>(-m) : m;
}

/// The rp set of segment seg.
inline void segment_rp(int seg, const Word16* prev, const Word16* cur, Word16* rp) {
    Word16 LARp[8];
    interpolate_lar(seg, prev, cur, LARp);
    for (int i = 0; i < 8; ++i) rp[i] = lar_to_rp(LARp[i]);
}

/// Reads and writes an opaque state block as its layout struct, so a block
/// needs no particular alignment.
template <class S>
inline S load_state(const void* block) {
    S s;
    std::memcpy(&s, block, sizeof s);
    return s;
}
template <class S>
inline void store_state(void* block, const S& s) {
    std::memcpy(block, &s, sizeof s);
}

}  // namespace gsmfr
ZEPS_END_VARIANT
