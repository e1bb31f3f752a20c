/* SPDX-License-Identifier: BSD-3-Clause */
// ITU-T G.722.1 encoder stages after the MLT (G.722.1 clause 3.3 to 3.7 and
// Annex C; reference routines of the fixed-point reference's encoder.c and
// common.c): region power computation and differential Huffman coding
// (compute_region_powers), categorisation (categorize), the per-region
// scaling of large coefficients (adjust_abs_region_power_index), the scalar
// quantisation, vector index and Huffman coding of each region
// (vector_huffman), the rate control over the 16 or 32 categorisations
// (vector_quantize_mlts) and the bit packing into 16-bit words
// (bits_to_words). Coefficients are the MLT's 16-bit values scaled by
// 2^mag_shift; region powers are indices of 2^(i/2) rms steps.
#pragma once

#include <cstdint>

#include "common/basic_op.h"
#include "g722/g7221_code_tables.h"

ZEPS_BEGIN_VARIANT
namespace g7221 {

constexpr int kRegionSize = 20;
constexpr int kMaxRegions = 28;
constexpr int kNumCategories = 8;
constexpr int kMaxControlPossibilities = 32;
constexpr int kDrpDiffMin = -12, kDrpDiffMax = 11;
constexpr int kEsfAdjustment = 7;  // ESF_ADJUSTMENT_TO_RMS_INDEX
constexpr int kPowerTableNegatives = 24;
/// 32-bit words kept per region for its bits. The reference keeps four
/// (128 bits); a region can need up to 180 (ten vectors of a 16-bit code
/// and two sign bits), so eight are kept here: streams whose regions fit in
/// 128 bits, i.e. every real one, come out the same.
constexpr int kRegionWords = 8;

/// The frame parameters of one mode: 14 regions, 320 samples, 4 control
/// bits (7 kHz) or 28 regions, 640 samples, 5 control bits (14 kHz).
struct Layout {
    int regions, frame, control_bits, control_possibilities;
};
constexpr Layout layout(bool annex_c) { return annex_c ? Layout{28, 640, 5, 32} : Layout{14, 320, 4, 16}; }

// ------------------------------------------------------------ envelope

/// The quantised power index of one region of 20 coefficients, before the
/// mag_shift correction (the power normalisation loop of
/// compute_region_powers).
inline int region_power_shift(const Word16* x) {
    Word32 acc = 0;
    for (int j = 0; j < kRegionSize; ++j) acc = L_add(acc, Word32{x[j]} * x[j]);
    int shift = 0;
    while ((acc & 0x7fff0000) > 0) {
        acc = L_shr(acc, 1);
        ++shift;
    }
    while (L_sub(acc, 32767) <= 0 && shift + 15 >= 0) {
        acc = L_shl(acc, 1);
        --shift;
    }
    acc = L_shr(acc, 1);
    if (acc >= 28963) ++shift;
    return shift;
}

/// compute_region_powers: rms indices (absolute, limited to the coded
/// range), their Huffman code lengths and codes; returns the envelope bits.
inline int compute_region_powers(const Word16* coefs, int mag_shift, int regions, Word16* rms, Word16* num_bits,
                                 std::uint16_t* codes) {
    for (int r = 0; r < regions; ++r)
        rms[r] = static_cast<Word16>(region_power_shift(coefs + r * kRegionSize) - 2 * mag_shift + 35 -
                                     kPowerTableNegatives);
    for (int r = regions - 2; r >= 0; --r)
        if (rms[r] < rms[r + 1] - kDrpDiffMax) rms[r] = static_cast<Word16>(rms[r + 1] - kDrpDiffMax);
    rms[0] = static_cast<Word16>(rms[0] < 1 - kEsfAdjustment ? 1 - kEsfAdjustment
                                 : rms[0] > 31 - kEsfAdjustment ? 31 - kEsfAdjustment
                                                                : rms[0]);
    int bits = 5;
    num_bits[0] = 5;
    codes[0] = static_cast<std::uint16_t>(rms[0] + kEsfAdjustment);
    for (int r = 1; r < regions; ++r)
        rms[r] = static_cast<Word16>(rms[r] < -8 - kEsfAdjustment ? -8 - kEsfAdjustment
                                     : rms[r] > 31 - kEsfAdjustment ? 31 - kEsfAdjustment
                                                                    : rms[r]);
    for (int r = 1; r < regions; ++r) {
        int j = rms[r] - rms[r - 1];
        if (j < kDrpDiffMin) j = kDrpDiffMin;
        j -= kDrpDiffMin;
        rms[r] = static_cast<Word16>(rms[r - 1] + j + kDrpDiffMin);
        bits += g7221_differential_region_power_bits[r][j];
        num_bits[r] = g7221_differential_region_power_bits[r][j];
        codes[r] = g7221_differential_region_power_codes[r][j];
    }
    return bits;
}

// ------------------------------------------------------------ categorisation

inline int clamp_category(int j) { return j < 0 ? 0 : j > kNumCategories - 1 ? kNumCategories - 1 : j; }

/// calc_offset: the largest offset (binary search over -32..31) whose raw
/// categorisation's expected bits reach available - 32.
inline int calc_offset(const Word16* rms, int regions, int available) {
    int answer = -32;
    for (int delta = 32; delta > 0; delta >>= 1) {
        const int test = answer + delta;
        int bits = 0;
        for (int r = 0; r < regions; ++r) bits += g7221_expected_bits_table[clamp_category((test - rms[r]) >> 1)];
        if (bits >= available - 32) answer = test;
    }
    return answer;
}

/// categorize with comp_powercat_and_catbalance: the initial categories
/// (the categorisation control's middle) and the order of the regions whose
/// category the control moves, category_balances[0..possibilities-2].
inline void categorize(int available, int regions, int possibilities, const Word16* rms, Word16* categories,
                       Word16* balances) {
    const int frame = regions == 14 ? 320 : 640;
    if (available > frame) available = ((available - frame) * 5 >> 3) + frame;
    const int offset = calc_offset(rms, regions, available);
    Word16 max_cat[kMaxRegions], min_cat[kMaxRegions];
    int expected = 0;
    for (int r = 0; r < regions; ++r) {
        categories[r] = static_cast<Word16>(clamp_category((offset - rms[r]) >> 1));
        expected += g7221_expected_bits_table[categories[r]];
        max_cat[r] = min_cat[r] = categories[r];
    }
    int max = expected, min = expected;
    int max_ptr = possibilities, min_ptr = possibilities;
    Word16 temp_balances[2 * kMaxControlPossibilities];
    // When no region can move (every category already at its end, which
    // only arbitrary bit patterns reach), the reference uses an index it
    // never set; here the last one found is kept and its category left
    // inside 0..7.
    int raw_min_at = 0, raw_max_at = 0;
    for (int j = 0; j < possibilities - 1; ++j) {
        if (max + min <= 2 * available) {
            int raw_min = 99, &at = raw_min_at;
            for (int r = 0; r < regions; ++r)
                if (max_cat[r] > 0) {
                    const int v = offset - rms[r] - 2 * max_cat[r];
                    if (v < raw_min) {
                        raw_min = v;
                        at = r;
                    }
                }
            temp_balances[--max_ptr] = static_cast<Word16>(at);
            max -= g7221_expected_bits_table[max_cat[at]];
            if (max_cat[at] > 0) --max_cat[at];
            max += g7221_expected_bits_table[max_cat[at]];
        } else {
            int raw_max = -99, &at = raw_max_at;
            for (int r = regions - 1; r >= 0; --r)
                if (min_cat[r] < kNumCategories - 1) {
                    const int v = offset - rms[r] - 2 * min_cat[r];
                    if (v > raw_max) {
                        raw_max = v;
                        at = r;
                    }
                }
            temp_balances[min_ptr++] = static_cast<Word16>(at);
            min -= g7221_expected_bits_table[min_cat[at]];
            if (min_cat[at] < kNumCategories - 1) ++min_cat[at];
            min += g7221_expected_bits_table[min_cat[at]];
        }
    }
    for (int r = 0; r < regions; ++r) categories[r] = max_cat[r];
    for (int j = 0; j < possibilities - 1; ++j) balances[j] = temp_balances[max_ptr++];
}

// ------------------------------------------------------------ coefficient coding

/// adjust_abs_region_power_index: regions with a power index above 40 are
/// scaled down by 2^n (rounded) and their index lowered by 2n.
inline void adjust_region_powers(Word16* rms, Word16* coefs, int regions) {
    for (int r = 0; r < regions; ++r) {
        const int n = shr(static_cast<Word16>(rms[r] - 39), 1);
        if (n <= 0) continue;
        Word16* x = coefs + r * kRegionSize;
        for (int i = 0; i < kRegionSize; ++i)
            x[i] = extract_l(L_shr(L_shr(L_add(L_shl(x[i], 16), 32768), static_cast<Word16>(n)), 16));
        rms[r] = static_cast<Word16>(rms[r] - 2 * n);
    }
}

/// vector_huffman: quantises one region in a category below 7, packs the
/// Huffman code and sign bits of each vector MSB first into 32-bit words
/// (at most six) and returns the bit count.
inline int vector_huffman(int category, int power_index, const Word16* x, std::uint32_t* words) {
    const int dim = g7221_vector_dimension[category];
    const int vectors = g7221_number_of_vectors[category];
    const int kmax = g7221_max_bin[category];
    Word32 acc = L_mult(g7221_step_size_inverse_table[category], g7221_standard_deviation_inverse_table[power_index]);
    acc = L_shr(L_add(L_shr(acc, 1), 4096), 13);
    const Word16 low_bits = static_cast<Word16>(acc & 3);
    const Word16 inv_step = extract_l(L_shr(acc, 2));
    std::uint32_t current = 0;
    int free_bits = 32, region_bits = 0;
    for (int v = 0; v < vectors; ++v) {
        int index = 0, signs = 0, nonzero = 0;
        for (int j = 0; j < dim; ++j, ++x) {
            int k = abs_s(*x);
            Word32 q = L_shr(L_mult(static_cast<Word16>(k), inv_step), 1);
            Word16 low = static_cast<Word16>(L_mult(static_cast<Word16>(k), low_bits));
            low = static_cast<Word16>(L_shr(low, 1));
            low = static_cast<Word16>(L_add(low, g7221_int_dead_zone_low_bits[category]));
            low = static_cast<Word16>(L_shr(low, 2));
            q = L_shr(L_add(L_add(q, g7221_int_dead_zone[category]), low), 13);
            k = extract_l(q);
            // A power index far below what the frame coder derives from these
            // coefficients wraps the step inverse negative; the reference
            // would index its tables below zero there: no bin below 0.
            if (k < 0) k = 0;
            if (k != 0) {
                ++nonzero;
                signs = (signs << 1) + (*x > 0);
                if (k > kmax) k = kmax;
            }
            index = index * (kmax + 1) + k;
        }
        const int len = g7221_bitcount_tables[category][index] + nonzero;
        region_bits += len;
        const std::uint32_t code = (std::uint32_t{g7221_code_tables[category][index]} << nonzero) + static_cast<std::uint32_t>(signs);
        const int j = free_bits - len;
        if (j >= 0) {
            current |= code << j;
            free_bits = j;
        } else {
            current |= code >> -j;
            *words++ = current;
            free_bits = 32 + j;
            current = code << free_bits;
        }
    }
    *words = current;
    return region_bits;
}

/// One region's bits for its current category (category 7: none).
inline int code_region(int category, int power_index, const Word16* x, std::uint32_t* words) {
    return category < kNumCategories - 1 ? vector_huffman(category, power_index, x, words) : 0;
}

/// vector_quantize_mlts: codes every region at the middle categorisation,
/// then moves the categorisation control until the bits fit; returns the
/// control value. bit_counts[r] and words[kRegionWords r..] hold each region's bits.
inline int vector_quantize(int available, int regions, int possibilities, const Word16* coefs, const Word16* rms,
                           Word16* categories, const Word16* balances, Word16* bit_counts, std::uint32_t* words) {
    int control = 0;
    for (; control < possibilities / 2 - 1; ++control) ++categories[balances[control]];
    int total = 0;
    for (int r = 0; r < regions; ++r) {
        bit_counts[r] = static_cast<Word16>(code_region(categories[r], rms[r], coefs + r * kRegionSize, words + kRegionWords * r));
        total += bit_counts[r];
    }
    auto recode = [&](int r) {
        total -= bit_counts[r];
        bit_counts[r] = static_cast<Word16>(code_region(categories[r], rms[r], coefs + r * kRegionSize, words + kRegionWords * r));
        total += bit_counts[r];
    };
    while (total < available && control > 0) {
        const int r = balances[--control];
        --categories[r];
        recode(r);
    }
    while (total > available && control < possibilities - 1) {
        const int r = balances[control];
        ++categories[r];
        recode(r);
        ++control;
    }
    return control;
}

/// bits_to_words: envelope codes, the categorisation control, then the
/// regions' bits in order, cut at the frame size; unused bits at the end
/// are ones. out receives bits_per_frame / 16 words, first bit in the MSB.
inline void bits_to_words(const std::uint32_t* region_words, const Word16* bit_counts, const Word16* drp_bits,
                          const std::uint16_t* drp_codes, int control, int regions, int control_bits,
                          int bits_per_frame, Word16* out) {
    // The envelope alone can exceed a small frame (28 regions at 320 bits):
    // words past the frame are counted but not stored, as the reference
    // writes only the frame's words out.
    const int frame_words = bits_per_frame / 16;
    int at = 0, free_bits = 16;
    std::uint32_t word = 0;
    auto emit = [&](std::uint32_t w) {
        if (at < frame_words) out[at] = static_cast<Word16>(w);
        ++at;
    };
    auto put = [&](std::uint32_t value, int len) {  // len <= 16 bits, value < 2^len
        const int j = len - free_bits;
        if (j >= 0) {
            emit(word + (value >> j));
            free_bits = 16 - j;
            word = (value << free_bits) & 0xFFFF;
        } else {
            word += value << -j;
            free_bits -= len;
        }
    };
    for (int r = 0; r < regions; ++r) put(drp_codes[r], drp_bits[r]);
    put(static_cast<std::uint32_t>(control), control_bits);
    for (int r = 0; r < regions && at * 16 < bits_per_frame; ++r) {
        const std::uint32_t* in = region_words + kRegionWords * r;
        int count = bit_counts[r];
        int left = count < 32 ? count : 32;
        std::uint32_t current = *in++;
        while (count > 0 && at * 16 < bits_per_frame) {
            if (left >= free_bits) {
                word += current >> (32 - free_bits);
                current <<= free_bits;
                left -= free_bits;
                emit(word);
                word = 0;
                free_bits = 16;
            } else {
                word += (current >> (32 - left)) << (free_bits - left);
                free_bits -= left;
                left = 0;
            }
            if (left == 0) {
                current = *in++;
                count -= 32;
                left = count < 32 ? count : 32;
            }
        }
    }
    while (at * 16 < bits_per_frame) {
        emit(word + (0xFFFFu >> (16 - free_bits)));
        word = 0;
        free_bits = 16;
    }
}

/// The encoder's steps after the categorisation (encoder() from the
/// mag_shift correction of the power indices on): adjust_abs_region_power_index,
/// vector_quantize_mlts and bits_to_words. coefs and rms are modified,
/// categories receive the chosen categorisation; returns the control value.
inline int quantize_and_pack(Word16* coefs, int mag_shift, Word16* rms, Word16* categories, const Word16* balances,
                             const Word16* drp_bits, const std::uint16_t* drp_codes, int bits_per_frame,
                             const Layout& l, Word16* out) {
    int envelope = 0;
    for (int r = 0; r < l.regions; ++r) envelope += drp_bits[r];
    const int available = bits_per_frame - envelope - l.control_bits;
    Word16 bit_counts[kMaxRegions] = {};
    std::uint32_t words[kRegionWords * kMaxRegions] = {};
    for (int r = 0; r < l.regions; ++r) rms[r] = static_cast<Word16>(rms[r] + 2 * mag_shift + kPowerTableNegatives);
    adjust_region_powers(rms, coefs, l.regions);
    const int control = vector_quantize(available, l.regions, l.control_possibilities, coefs, rms, categories,
                                        balances, bit_counts, words);
    bits_to_words(words, bit_counts, drp_bits, drp_codes, control, l.regions, l.control_bits, bits_per_frame, out);
    return control;
}

/// The whole frame after the MLT (encoder()): bits_per_frame / 16 words.
inline void encode_frame(Word16* coefs, int mag_shift, int bits_per_frame, bool annex_c, Word16* out) {
    const Layout l = layout(annex_c);
    Word16 rms[kMaxRegions], drp_bits[kMaxRegions], categories[kMaxRegions], balances[kMaxControlPossibilities];
    std::uint16_t drp_codes[kMaxRegions];
    const int envelope = compute_region_powers(coefs, mag_shift, l.regions, rms, drp_bits, drp_codes);
    categorize(bits_per_frame - envelope - l.control_bits, l.regions, l.control_possibilities, rms, categories,
               balances);
    quantize_and_pack(coefs, mag_shift, rms, categories, balances, drp_bits, drp_codes, bits_per_frame, l, out);
}

}  // namespace g7221
ZEPS_END_VARIANT
