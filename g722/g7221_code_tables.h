/* SPDX-License-Identifier: BSD-3-Clause */
// ITU-T G.722.1 coding tables (values of the G.722.1 fixed-point reference,
// G.722.1 clauses 3.4 to 3.6 and 4.4 to 4.6): region power quantisation
// (rms tables, the differential power Huffman codes and decoder trees per
// region), categorisation (expected bits per category), the scalar/vector
// quantiser of each category (step sizes, dead zones, dimensions, maximum
// bins, centroids) and its Huffman codes, code lengths and decoder trees.
#pragma once

#include <cstdint>

namespace zeps {

extern const std::int16_t g7221_int_region_standard_deviation_table[64];
extern const std::int16_t g7221_standard_deviation_inverse_table[64];
extern const std::int16_t g7221_step_size_inverse_table[8];
extern const std::int16_t g7221_vector_dimension[8];
extern const std::int16_t g7221_number_of_vectors[8];
extern const std::int16_t g7221_max_bin[8];
extern const std::int16_t g7221_max_bin_plus_one_inverse[8];
extern const std::int16_t g7221_int_dead_zone[8];
extern const std::int16_t g7221_int_dead_zone_low_bits[8];
extern const std::int16_t g7221_expected_bits_table[8];
extern const std::int16_t g7221_differential_region_power_bits[28][24];
extern const std::uint16_t g7221_differential_region_power_codes[28][24];
extern const std::int16_t g7221_differential_region_power_decoder_tree[28][23][2];
extern const std::int16_t g7221_mlt_quant_centroid[8][16];
extern const std::int16_t g7221_mlt_sqvh_bitcount_category_0[196];
extern const std::uint16_t g7221_mlt_sqvh_code_category_0[196];
extern const std::int16_t g7221_mlt_decoder_tree_category_0[180][2];
extern const std::int16_t g7221_mlt_sqvh_bitcount_category_1[100];
extern const std::uint16_t g7221_mlt_sqvh_code_category_1[100];
extern const std::int16_t g7221_mlt_decoder_tree_category_1[93][2];
extern const std::int16_t g7221_mlt_sqvh_bitcount_category_2[49];
extern const std::uint16_t g7221_mlt_sqvh_code_category_2[49];
extern const std::int16_t g7221_mlt_decoder_tree_category_2[47][2];
extern const std::int16_t g7221_mlt_sqvh_bitcount_category_3[625];
extern const std::uint16_t g7221_mlt_sqvh_code_category_3[625];
extern const std::int16_t g7221_mlt_decoder_tree_category_3[519][2];
extern const std::int16_t g7221_mlt_sqvh_bitcount_category_4[256];
extern const std::uint16_t g7221_mlt_sqvh_code_category_4[256];
extern const std::int16_t g7221_mlt_decoder_tree_category_4[208][2];
extern const std::int16_t g7221_mlt_sqvh_bitcount_category_5[243];
extern const std::uint16_t g7221_mlt_sqvh_code_category_5[243];
extern const std::int16_t g7221_mlt_decoder_tree_category_5[191][2];
extern const std::int16_t g7221_mlt_sqvh_bitcount_category_6[32];
extern const std::uint16_t g7221_mlt_sqvh_code_category_6[32];
extern const std::int16_t g7221_mlt_decoder_tree_category_6[31][2];

/// Per category 0..6: the Huffman code lengths, codes and decoder trees.
extern const std::int16_t* const g7221_bitcount_tables[7];
extern const std::uint16_t* const g7221_code_tables[7];
extern const std::int16_t (*const g7221_decoder_trees[7])[2];

}  // namespace zeps
