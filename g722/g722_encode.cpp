// SPDX-License-Identifier: BSD-3-Clause
// ITU-T G.722 sub-band ADPCM encoder (G.722 clauses 3 and 6; reference
// g722_encode, lsbcod, hsbcod and qmf_tx of the ITU-T G.191 STL): 16 kHz
// 16-bit PCM through the transmit QMF into the lower and higher sub-band
// ADPCM encoders, one 8-bit code word per pair of samples. The 144-byte
// state block and its reset are shared with the decoder (g722_band.h).
#include "common/args.h"
#include "common/exports.h"
#include "g722/g722_simd.h"

ZEPS_BEGIN_VARIANT
namespace {

/// The state block's size query and reset, shared by both directions.
ZepStatus state_size(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = static_cast<Zep32s>(sizeof(g722::State));
    return zepStsNoErr;
}

ZepStatus state_init(void* pState) {
    if (pState == nullptr) return zepStsNullPtrErr;
    g722::State st;
    g722::reset(st);
    std::memcpy(pState, &st, sizeof st);
    return zepStsNoErr;
}

/// Both bands' working copies for one call.
struct Bands {
    g722::Band low, high;
    explicit Bands(const g722::State& st) {
        g722::load(low, st.low);
        g722::load(high, st.high);
    }
    void store(g722::State& st) const {
        g722::store(st.low, low);
        g722::store(st.high, high);
    }
};

}  // namespace

ZepStatus zepsSBADPCMEncodeStateSize_G722_16s(Zep32s* pSize) { return state_size(pSize); }
ZepStatus zepsSBADPCMDecodeStateSize_G722_16s(Zep32s* pSize) { return state_size(pSize); }
ZepStatus zepsSBADPCMEncodeInit_G722_16s(ZepG722EncodeState* pState) { return state_init(pState); }
ZepStatus zepsSBADPCMDecodeInit_G722_16s(ZepG722DecodeState* pState) { return state_init(pState); }

ZepStatus zepsSBADPCMEncode_G722_16s(const Zep16s* pSrc, Zep16s* pDst, Zep32s len, ZepG722EncodeState* pState) {
    if (any_null(pSrc, pDst, pState)) return zepStsNullPtrErr;
    if (len < 2 || (len & 1)) return zepStsSizeErr;
    g722::State st;
    std::memcpy(&st, pState, sizeof st);
    const g722::QmfCoefs& coefs = g722::kQmfCoefs;
    const g722::QuantlLevels& levels = g722::kQuantlLevels;
    g722::QmfRegs qmf;
    g722::FastBand low, high;
    qmf.load(st.qmf);
    low.load(st.low);
    high.load(st.high);
    for (int n = 0; n < len / 2; ++n) {
        Word16 xl, xh;
        g722::qmf_tx_simd(qmf, coefs, pSrc[2 * n], pSrc[2 * n + 1], xl, xh);
        const int il = g722::encode_low_simd(low, levels, xl);
        const int ih = g722::quanth(g722::sub16(xh, high.w.s), high.w.det);
        g722::update_high_simd(high, ih);
        pDst[n] = g722::code_word(il, ih);
    }
    qmf.store(st.qmf);
    low.store(st.low);
    high.store(st.high);
    std::memcpy(pState, &st, sizeof st);
    return zepStsNoErr;
}

ZepStatus zepsSBADPCMEncodeBands_G722_16s(const Zep16s* pSrcLow, const Zep16s* pSrcHigh, Zep16s* pDst, Zep32s len,
                                          ZepG722EncodeState* pState) {
    if (any_null(pSrcLow, pSrcHigh, pDst, pState)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    g722::State st;
    std::memcpy(&st, pState, sizeof st);
    Bands w(st);
    for (int n = 0; n < len; ++n) {
        const int il = g722::encode_low(w.low, pSrcLow[n]);
        const int ih = g722::encode_high(w.high, pSrcHigh[n]);
        pDst[n] = g722::code_word(il, ih);
    }
    w.store(st);
    std::memcpy(pState, &st, sizeof st);
    return zepStsNoErr;
}

ZEPS_END_VARIANT
