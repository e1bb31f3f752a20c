// SPDX-License-Identifier: BSD-3-Clause
// ITU-T G.722.1 coder stages as separate exports (G.722.1 clauses 3.3 to 3.6
// and 4.2 to 4.4, Annex C): region powers and their differential coding,
// categorisation, vector quantisation with Huffman coding and bit packing,
// and the decoder's envelope, categorisation and coefficient decoding. They
// run the same routines as zepsEncode_G7221_16s and zepsDecode_G7221_16s
// (g7221_encoder.h, g7221_decoder.h). Power indices are the reference's
// absolute_region_power_index (steps of 3.01 dB), categories 0..7.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "common/args.h"
#include "common/exports.h"
#include "g722/g7221_decoder.h"

ZEPS_BEGIN_VARIANT
namespace {

bool valid_regions(Zep32s numRegions) { return numRegions == 14 || numRegions == 28; }
bool valid_frame_bits(Zep32s bitsPerFrame) { return in_range(bitsPerFrame, 320, 960) && bitsPerFrame % 16 == 0; }

/// True when every v[0..n-1] lies in lo..hi.
bool all_in(const Zep16s* v, int n, int lo, int hi) {
    bool ok = true;
    for (int i = 0; i < n; ++i) ok &= v[i] >= lo && v[i] <= hi;
    return ok;
}

/// The power index range compute_region_powers codes: -15..24 (the first
/// region -6..24).
constexpr int kPowerIndexMin = -8 - g7221::kEsfAdjustment, kPowerIndexMax = 31 - g7221::kEsfAdjustment;

/// The lowest number of bits left a decoder stage accepts: the envelope and
/// control bits of any frame fit in 1024, so a frame's reading never goes
/// further below zero.
constexpr int kMinBitsLeft = -1024;

}  // namespace

// ------------------------------------------------------------ encoder

ZepStatus zepsRegionPowerQuant_G7221_16s(const Zep16s* pMltCoefs, Zep32s magShift, Zep16s* pDrpNumBits,
                                         Zep16s* pDrpCodeBits, Zep16s* pRegionPowerIndex, Zep32s numRegions,
                                         Zep32s* pEnvelopeBits) {
    if (any_null(pMltCoefs, pDrpNumBits, pDrpCodeBits, pRegionPowerIndex, pEnvelopeBits)) return zepStsNullPtrErr;
    if (!in_range(magShift, -1, 9)) return zepStsRangeErr;
    if (!valid_regions(numRegions)) return zepStsRangeErr;
    Word16 rms[g7221::kMaxRegions], bits[g7221::kMaxRegions];
    std::uint16_t codes[g7221::kMaxRegions];
    const int envelope = g7221::compute_region_powers(pMltCoefs, magShift, numRegions, rms, bits, codes);
    for (int r = 0; r < numRegions; ++r) {
        pDrpNumBits[r] = bits[r];
        pDrpCodeBits[r] = static_cast<Zep16s>(codes[r]);
        pRegionPowerIndex[r] = rms[r];
    }
    *pEnvelopeBits = envelope;
    return zepStsNoErr;
}

ZepStatus zepsCategorize_G7221_16s(Zep32s availableBits, Zep32s numRegions, const Zep16s* pRegionPowerIndex,
                                   Zep16s* pPowerCategories, Zep16s* pCategoryBalances) {
    if (any_null(pRegionPowerIndex, pPowerCategories, pCategoryBalances)) return zepStsNullPtrErr;
    if (!in_range(availableBits, -32768, 32767)) return zepStsRangeErr;
    if (!valid_regions(numRegions)) return zepStsRangeErr;
    const g7221::Layout l = g7221::layout(numRegions == 28);
    Word16 categories[g7221::kMaxRegions], balances[g7221::kMaxControlPossibilities];
    g7221::categorize(availableBits, l.regions, l.control_possibilities, pRegionPowerIndex, categories, balances);
    std::memcpy(pPowerCategories, categories, sizeof(Word16) * static_cast<std::size_t>(l.regions));
    std::memcpy(pCategoryBalances, balances, sizeof(Word16) * static_cast<std::size_t>(l.control_possibilities - 1));
    return zepStsNoErr;
}

ZepStatus zepsVectorQuantMLT_G7221_16s(Zep32s bitsPerFrame, Zep32s numRegions, const Zep16s* pMltCoefs,
                                       Zep32s magShift, const Zep16s* pRegionPowerIndex, Zep16s* pPowerCategories,
                                       const Zep16s* pCategoryBalances, const Zep16s* pDrpNumBits,
                                       const Zep16s* pDrpCodeBits, Zep32s* pCategorizationControl, Zep16s* pDst) {
    if (any_null(pMltCoefs, pRegionPowerIndex, pPowerCategories, pCategoryBalances, pDrpNumBits, pDrpCodeBits,
                 pCategorizationControl, pDst))
        return zepStsNullPtrErr;
    if (!valid_frame_bits(bitsPerFrame)) return zepStsRangeErr;
    if (!valid_regions(numRegions)) return zepStsRangeErr;
    if (!in_range(magShift, -1, 9)) return zepStsRangeErr;
    const g7221::Layout l = g7221::layout(numRegions == 28);
    if (!all_in(pRegionPowerIndex, l.regions, kPowerIndexMin, kPowerIndexMax) ||
        !all_in(pPowerCategories, l.regions, 0, g7221::kNumCategories - 1) ||
        !all_in(pCategoryBalances, l.control_possibilities - 1, 0, l.regions - 1) ||
        !all_in(pDrpNumBits, l.regions, 0, 16))
        return zepStsOutOfRangeErr;
    Word16 coefs[640], rms[g7221::kMaxRegions], categories[g7221::kMaxRegions];
    std::uint16_t codes[g7221::kMaxRegions];
    std::memcpy(coefs, pMltCoefs, sizeof(Word16) * static_cast<std::size_t>(l.regions * g7221::kRegionSize));
    for (int r = 0; r < l.regions; ++r) {
        rms[r] = pRegionPowerIndex[r];
        categories[r] = pPowerCategories[r];
        // only the code's low pDrpNumBits[r] bits are sent
        codes[r] = static_cast<std::uint16_t>(static_cast<std::uint32_t>(static_cast<std::uint16_t>(pDrpCodeBits[r])) &
                                              ((1u << pDrpNumBits[r]) - 1));
    }
    *pCategorizationControl = g7221::quantize_and_pack(coefs, magShift, rms, categories, pCategoryBalances,
                                                       pDrpNumBits, codes, bitsPerFrame, l, pDst);
    std::memcpy(pPowerCategories, categories, sizeof(Word16) * static_cast<std::size_t>(l.regions));
    return zepStsNoErr;
}

// ------------------------------------------------------------ decoder

ZepStatus zepsDecodeEnvelope_G7221_16s(const Zep16s* pSrc, Zep32s bitsPerFrame, Zep32s* pBitsLeft, Zep32s numRegions,
                                       Zep16s* pStdDev, Zep16s* pRegionPowerIndex, Zep32s* pMagShift) {
    if (any_null(pSrc, pBitsLeft, pStdDev, pRegionPowerIndex, pMagShift)) return zepStsNullPtrErr;
    if (!valid_frame_bits(bitsPerFrame)) return zepStsRangeErr;
    if (!valid_regions(numRegions)) return zepStsRangeErr;
    g7221::BitReader in(pSrc, bitsPerFrame);
    Word16 std_dev[g7221::kMaxRegions], rms[g7221::kMaxRegions];
    const int shift = g7221::decode_envelope(in, numRegions, std_dev, rms);
    std::memcpy(pStdDev, std_dev, sizeof(Word16) * static_cast<std::size_t>(numRegions));
    std::memcpy(pRegionPowerIndex, rms, sizeof(Word16) * static_cast<std::size_t>(numRegions));
    *pBitsLeft = in.bits_left;
    *pMagShift = shift;
    return zepStsNoErr;
}

ZepStatus zepsDecodeCategories_G7221_16s(const Zep16s* pSrc, Zep32s bitsPerFrame, Zep32s* pBitsLeft, Zep32s numRegions,
                                         const Zep16s* pRegionPowerIndex, Zep16s* pPowerCategories,
                                         Zep32s* pCategorizationControl) {
    if (any_null(pSrc, pBitsLeft, pRegionPowerIndex, pPowerCategories, pCategorizationControl))
        return zepStsNullPtrErr;
    if (!valid_frame_bits(bitsPerFrame)) return zepStsRangeErr;
    if (!in_range(*pBitsLeft, kMinBitsLeft, bitsPerFrame)) return zepStsRangeErr;
    if (!valid_regions(numRegions)) return zepStsRangeErr;
    const g7221::Layout l = g7221::layout(numRegions == 28);
    g7221::BitReader in(pSrc, bitsPerFrame, *pBitsLeft);
    Word16 categories[g7221::kMaxRegions];
    const int control = g7221::decode_categories(in, l, pRegionPowerIndex, categories);
    std::memcpy(pPowerCategories, categories, sizeof(Word16) * static_cast<std::size_t>(l.regions));
    *pBitsLeft = in.bits_left;
    *pCategorizationControl = control;
    return zepStsNoErr;
}

ZepStatus zepsDecodeVectorQuantMLT_G7221_16s(const Zep16s* pSrc, Zep32s bitsPerFrame, Zep32s* pBitsLeft,
                                             ZepG7221DecodeState* pState, Zep32s numRegions, const Zep16s* pStdDev,
                                             Zep16s* pPowerCategories, Zep16s* pDstCoefs) {
    if (any_null(pSrc, pBitsLeft, pState, pStdDev, pPowerCategories, pDstCoefs)) return zepStsNullPtrErr;
    if (!valid_frame_bits(bitsPerFrame)) return zepStsRangeErr;
    if (!in_range(*pBitsLeft, kMinBitsLeft, bitsPerFrame)) return zepStsRangeErr;
    if (!valid_regions(numRegions)) return zepStsRangeErr;
    const g7221::Layout l = g7221::layout(numRegions == 28);
    if (!all_in(pPowerCategories, l.regions, 0, g7221::kNumCategories - 1)) return zepStsOutOfRangeErr;
    // the noise generator of the decoder state block (the rest is untouched)
    auto* rnd_bytes = reinterpret_cast<unsigned char*>(pState) + offsetof(g7221::DecoderMemory, rnd);
    g7221::Random rnd;
    std::memcpy(&rnd, rnd_bytes, sizeof rnd);
    g7221::BitReader in(pSrc, bitsPerFrame, *pBitsLeft);
    Word16 categories[g7221::kMaxRegions], coefs[640] = {};
    std::memcpy(categories, pPowerCategories, sizeof(Word16) * static_cast<std::size_t>(l.regions));
    g7221::decode_coefficients(in, rnd, l.regions, pStdDev, categories, coefs);
    std::memcpy(pDstCoefs, coefs, sizeof(Word16) * static_cast<std::size_t>(l.frame));
    std::memcpy(pPowerCategories, categories, sizeof(Word16) * static_cast<std::size_t>(l.regions));
    *pBitsLeft = in.bits_left;
    std::memcpy(rnd_bytes, &rnd, sizeof rnd);
    return zepStsNoErr;
}

ZEPS_END_VARIANT
