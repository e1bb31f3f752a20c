// SPDX-License-Identifier: BSD-3-Clause
// ITU-T G.722 sub-band ADPCM decoder (G.722 clauses 4 and 6; reference
// g722_decode, lsbdec, hsbdec and qmf_rx of the ITU-T G.191 STL): 8-bit
// code words through the lower (mode 1, 2 or 3 inverse quantiser) and
// higher sub-band ADPCM decoders and the receive QMF into 16 kHz 16-bit
// PCM, two samples per code word.
#include "common/args.h"
#include "common/exports.h"
#include "g722/g722_simd.h"

ZEPS_BEGIN_VARIANT
namespace {

/// True when every code word lies in the 8-bit table range 0..255.
bool codes_in_table(const Zep16s* code, int len) {
    unsigned bad = 0;
    for (int n = 0; n < len; ++n) bad |= static_cast<std::uint16_t>(code[n]) & 0xFF00u;
    return bad == 0;
}

/// Runs the two band decoders over len codes; Out(n, rl, rh) takes each
/// pair of reconstructed sub-band samples.
template <int ModeIndex, class Out>
[[gnu::always_inline]] inline void decode_bands(g722::State& st, const Zep16s* code, int len, Out out) {
    g722::Band low, high;
    g722::load(low, st.low);
    g722::load(high, st.high);
    for (int n = 0; n < len; ++n) {
        const int c = code[n];
        const Word16 rl = g722::decode_low(low, c & 0x3F, ModeIndex);
        const Word16 rh = g722::decode_high(high, c >> 6);
        out(n, rl, rh);
    }
    g722::store(st.low, low);
    g722::store(st.high, high);
}

/// The whole decoder with the vector QMF and zero sections (g722_simd.h).
template <int ModeIndex>
void decode_pcm(g722::State& st, const Zep16s* code, Zep16s* dst, int len) {
    const g722::QmfCoefs& coefs = g722::kQmfCoefs;
    g722::QmfRegs qmf;
    g722::FastBand low, high;
    qmf.load(st.qmf);
    low.load(st.low);
    high.load(st.high);
    for (int n = 0; n < len; ++n) {
        const int c = code[n];
        const Word16 rl = g722::decode_low_simd(low, c & 0x3F, ModeIndex);
        const Word16 rh = g722::decode_high_simd(high, c >> 6);
        g722::qmf_rx_simd(qmf, coefs, rl, rh, dst + 2 * n);
    }
    qmf.store(st.qmf);
    low.store(st.low);
    high.store(st.high);
}

template <int ModeIndex>
void decode_split(g722::State& st, const Zep16s* code, Zep16s* low, Zep16s* high, int len) {
    decode_bands<ModeIndex>(st, code, len, [&](int n, Word16 rl, Word16 rh) {
        low[n] = rl;
        high[n] = rh;
    });
}

}  // namespace

ZepStatus zepsSBADPCMDecode_G722_16s(const Zep16s* pSrcCode, Zep16s* pDst, Zep32s mode, Zep32s len,
                                     ZepG722DecodeState* pState) {
    if (any_null(pSrcCode, pDst, pState)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    if (!in_range(mode, 1, 3)) return zepStsRangeErr;
    if (!codes_in_table(pSrcCode, len)) return zepStsOutOfRangeErr;
    g722::State st;
    std::memcpy(&st, pState, sizeof st);
    switch (mode) {
        case 1: decode_pcm<0>(st, pSrcCode, pDst, len); break;
        case 2: decode_pcm<1>(st, pSrcCode, pDst, len); break;
        default: decode_pcm<2>(st, pSrcCode, pDst, len); break;
    }
    std::memcpy(pState, &st, sizeof st);
    return zepStsNoErr;
}

ZepStatus zepsSBADPCMDecodeBands_G722_16s(const Zep16s* pSrcCode, Zep16s* pDstLow, Zep16s* pDstHigh, Zep32s mode,
                                          Zep32s len, ZepG722DecodeState* pState) {
    if (any_null(pSrcCode, pDstLow, pDstHigh, pState)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    if (!in_range(mode, 1, 3)) return zepStsRangeErr;
    if (!codes_in_table(pSrcCode, len)) return zepStsOutOfRangeErr;
    g722::State st;
    std::memcpy(&st, pState, sizeof st);
    switch (mode) {
        case 1: decode_split<0>(st, pSrcCode, pDstLow, pDstHigh, len); break;
        case 2: decode_split<1>(st, pSrcCode, pDstLow, pDstHigh, len); break;
        default: decode_split<2>(st, pSrcCode, pDstLow, pDstHigh, len); break;
    }
    std::memcpy(pState, &st, sizeof st);
    return zepStsNoErr;
}

ZEPS_END_VARIANT
