/* SPDX-License-Identifier: BSD-3-Clause */
// ITU-T G.722.1 decoder stages before the inverse MLT (G.722.1 clause 4 and
// Annex C; reference routines of the fixed-point reference's decoder.c):
// envelope decoding (decode_envelope), the categorisation the encoder made
// (categorize, rate_adjust_categories), Huffman decoding and reconstruction
// of the coefficients with noise filling (decode_vector_quantized_mlt_indices,
// index_to_array, get_rand), the frame checks (test_4_frame_errors) and the
// concealment of erased or corrupt frames by the previous frame's
// coefficients (error_handling).
//
// Memory safety on corrupt frames: bits past the end of the frame read as 0,
// and table indices derived from out-of-range power indices are clamped to
// the table; both only occur in frames the checks flag as corrupt, whose
// coefficients the concealment replaces, so valid streams decode exactly as
// the reference decodes them.
#pragma once

#include <cstdint>

#include "common/basic_op.h"
#include "g722/g7221_encoder.h"

ZEPS_BEGIN_VARIANT
namespace g7221 {

/// Reads the frame MSB first (get_next_bit) and counts the bits left.
struct BitReader {
    const Word16* words;
    int word_count;
    int at = 0, bit_count = 0, bits_left;
    Word16 current = 0;
    BitReader(const Word16* w, int bits) : words(w), word_count(bits / 16), bits_left(bits) {}
    /// A reader of a frame of bits bits with left bits not yet read (the
    /// reference's number_of_bits_left; below zero once the bits ran out,
    /// and reads past the frame give 0).
    BitReader(const Word16* w, int bits, int left) : BitReader(w, bits) {
        const int read = bits - left;
        at = (read + 15) / 16;
        bit_count = (16 - read % 16) % 16;
        if (bit_count != 0) current = at - 1 < word_count ? words[at - 1] : 0;
        bits_left = left;
    }
    int next() {
        if (bit_count == 0) {
            current = at < word_count ? words[at] : 0;
            ++at;
            bit_count = 16;
        }
        --bit_count;
        return (current >> bit_count) & 1;
    }
};

/// The decoder's random generator (get_rand): four 16-bit seeds, all 1 at
/// the start (reset()).
struct Random {
    Word16 seed[4];
    Word16 next() {
        Word16 w = extract_l(L_add(seed[0], seed[3]));
        if (w & 0x8000) w = add(w, 1);
        seed[3] = seed[2];
        seed[2] = seed[1];
        seed[1] = seed[0];
        seed[0] = w;
        return w;
    }
};

inline int power_table_index(int i) { return i < 0 ? 0 : i > 63 ? 63 : i; }

/// decode_envelope: the absolute power indices, each region's standard
/// deviation, and the frame's mag_shift.
inline int decode_envelope(BitReader& in, int regions, Word16* std_dev, Word16* rms) {
    int index = 0;
    for (int i = 0; i < 5; ++i) index = (index << 1) + in.next();
    in.bits_left -= 5;
    rms[0] = static_cast<Word16>(index - kEsfAdjustment);
    for (int r = 1; r < regions; ++r) {
        int node = 0;
        do {
            node = g7221_differential_region_power_decoder_tree[r][node][in.next()];
            --in.bits_left;
        } while (node > 0);
        rms[r] = extract_l(L_add(L_add(rms[r - 1], -node), kDrpDiffMin));
    }
    Word16 sum = 0;
    int max_index = 0;
    for (int r = 0; r < regions; ++r) {
        const int i = extract_l(L_add(rms[r], kPowerTableNegatives));
        if (i > max_index) max_index = i;
        sum = add(sum, g7221_int_region_standard_deviation_table[power_table_index(i)]);
    }
    int shift = 9;
    while (shift >= 0 && (sum >= 8 || max_index > 28)) {
        --shift;
        sum = shr(sum, 1);
        max_index -= 2;
    }
    for (int r = 0; r < regions; ++r)
        std_dev[r] = g7221_int_region_standard_deviation_table[power_table_index(
            extract_l(L_add(rms[r], kPowerTableNegatives + shift * 2)))];
    return shift;
}

/// The categorisation control bits, the categorisation the encoder made
/// from the bits left (categorize) and the control's moves along the
/// balance order (rate_adjust_categories); returns the control value.
inline int decode_categories(BitReader& in, const Layout& l, const Word16* rms, Word16* categories) {
    Word16 balances[kMaxControlPossibilities];
    int control = 0;
    for (int i = 0; i < l.control_bits; ++i) control = (control << 1) + in.next();
    in.bits_left -= l.control_bits;
    categorize(in.bits_left, l.regions, l.control_possibilities, rms, categories, balances);
    for (int i = 0; i < control; ++i) ++categories[balances[i]];
    return control;
}

/// index_to_array: a vector index to its dim quantised magnitudes; returns
/// the number of non-zero ones.
inline int index_to_array(int index, int* k, int category) {
    const int bins = g7221_max_bin[category] + 1;
    int nonzero = 0;
    Word16 p = static_cast<Word16>(index);
    for (int j = g7221_vector_dimension[category] - 1; j >= 0; --j) {
        const Word16 q = mult(p, g7221_max_bin_plus_one_inverse[category]);
        k[j] = p - q * bins;
        p = q;
        nonzero += k[j] != 0;
    }
    return nonzero;
}

/// Fills count coefficients with +-fill by the random word's bits, only
/// where they are zero (categories 5, 6) or everywhere (category 7).
inline void noise_fill(Word16* x, Word16 fill, Word16 random, bool all) {
    for (int j = 0; j < 10; ++j, ++x) {
        if (!all && *x != 0) continue;
        *x = (random & 1) ? fill : negate(fill);
        random = shr(random, 1);
    }
}

/// decode_vector_quantized_mlt_indices.
inline void decode_coefficients(BitReader& in, Random& rnd, int regions, const Word16* std_dev,
                                Word16* categories, Word16* coefs) {
    static constexpr Word16 kNoiseFillFactor[3] = {5793, 8192, 23170};
    bool ran_out = false;
    for (int r = 0; r < regions; ++r) {
        // (above 7 only after the categorisation's guard for arbitrary bit
        // patterns; such a region is noise-filled like category 7)
        int category = categories[r] > 7 ? 7 : categories[r];
        Word16* x = coefs + r * kRegionSize;
        const Word16 sd = std_dev[r];
        if (category < 7) {
            const auto* tree = g7221_decoder_trees[category];
            const int dim = g7221_vector_dimension[category];
            Word16* out = x;
            for (int v = 0; v < g7221_number_of_vectors[category]; ++v) {
                int node = 0;
                do {
                    if (in.bits_left <= 0) {
                        ran_out = true;
                        break;
                    }
                    node = tree[node][in.next()];
                    --in.bits_left;
                } while (node > 0);
                if (ran_out) break;
                int k[5] = {};
                const int sign_bits = index_to_array(-node, k, category);
                if (in.bits_left < sign_bits) {
                    ran_out = true;
                    break;
                }
                int signs = 0, bit = 0;
                if (sign_bits != 0) {
                    for (int j = 0; j < sign_bits; ++j) signs = (signs << 1) + in.next();
                    in.bits_left -= sign_bits;
                    bit = 1 << (sign_bits - 1);
                }
                for (int j = 0; j < dim; ++j) {
                    Word16 value = extract_l(L_shr(Word32{sd} * g7221_mlt_quant_centroid[category][k[j]], 12));
                    if (value != 0) {
                        if ((signs & bit) == 0) value = negate(value);
                        bit >>= 1;
                    }
                    *out++ = value;
                }
            }
            if (ran_out) {
                for (int j = r + 1; j < regions; ++j) categories[j] = 7;
                category = 7;
            }
        }
        if (category == 5 || category == 6) {
            const Word16 fill = mult(sd, kNoiseFillFactor[category - 5]);
            noise_fill(x, fill, rnd.next(), false);
            noise_fill(x + 10, fill, rnd.next(), false);
        } else if (category == 7) {
            const Word16 fill = mult(sd, kNoiseFillFactor[2]);
            noise_fill(x, fill, rnd.next(), true);
            noise_fill(x + 10, fill, rnd.next(), true);
        }
    }
    if (ran_out) --in.bits_left;
}

/// test_4_frame_errors: non-zero when the frame is not a valid one
/// (1: unused bits not all ones, 2: bits ran out, 4: a power index out of
/// its coded range).
inline int frame_errors(BitReader& in, int regions, int possibilities, int control, const Word16* rms) {
    int flag = 0;
    if (in.bits_left > 0) {
        for (int i = 0; i < in.bits_left; ++i)
            if (in.next() == 0) flag = 1;
    } else if (control < possibilities - 1 && in.bits_left < 0) {
        flag |= 2;
    }
    for (int r = 0; r < regions; ++r)
        if (rms[r] + kEsfAdjustment > 31 || rms[r] + kEsfAdjustment + 8 < 0) flag |= 4;
    return flag;
}

/// The decoder's memory between frames: the last good frame's
/// coefficients and mag_shift (for concealment), the current mag_shift and
/// the random generator.
struct DecoderMemory {
    Word16 old_coefs[640];
    Word16 old_mag_shift;
    Word16 mag_shift;
    Random rnd;
};

inline void reset(DecoderMemory& m) {
    for (auto& c : m.old_coefs) c = 0;
    m.old_mag_shift = 0;
    m.mag_shift = 0;
    for (auto& x : m.rnd.seed) x = 1;
}

/// decoder(): one frame (or an erased one) to n coefficients; returns the
/// mag_shift for the inverse MLT.
inline int decode_frame(const Word16* words, int bits_per_frame, bool annex_c, bool erased, DecoderMemory& m,
                        Word16* coefs) {
    const Layout l = layout(annex_c);
    const int valid = l.regions * kRegionSize;
    int error = erased ? 1 : 0;
    if (!erased) {
        BitReader in(words, bits_per_frame);
        Word16 std_dev[kMaxRegions], rms[kMaxRegions], categories[kMaxRegions];
        m.mag_shift = static_cast<Word16>(decode_envelope(in, l.regions, std_dev, rms));
        const int control = decode_categories(in, l, rms, categories);
        decode_coefficients(in, m.rnd, l.regions, std_dev, categories, coefs);
        error = frame_errors(in, l.regions, l.control_possibilities, control, rms);
    }
    if (error != 0) {
        for (int i = 0; i < valid; ++i) {
            coefs[i] = m.old_coefs[i];
            m.old_coefs[i] = 0;
        }
        m.mag_shift = m.old_mag_shift;
        m.old_mag_shift = 0;
    } else {
        for (int i = 0; i < valid; ++i) m.old_coefs[i] = coefs[i];
        m.old_mag_shift = m.mag_shift;
    }
    for (int i = valid; i < l.frame; ++i) coefs[i] = 0;
    return m.mag_shift;
}

}  // namespace g7221
ZEPS_END_VARIANT
