// Codebook searches of the G.729 LSF quantiser (3.2.4, Lsp_pre_select,
// Lsp_select_1, Lsp_select_2): squared and weighted Euclidean distances with
// the reference's saturating accumulation; target and codebooks Q13.
#include "g729/lsf_search.h"

#include "g729/g729_tables.h"

ZEPS_BEGIN_VARIANT

int lsf_first_stage_search_scalar(const Word16* target) {
    int cand = 0;
    Word32 dmin = MAX_32;
    for (int i = 0; i < 128; ++i) {
        Word32 d = 0;
        for (int j = 0; j < 10; ++j) {
            const Word16 t = sub(target[j], lspcb1[i][j]);
            d = L_mac(d, t, t);
        }
        if (L_sub(d, dmin) < 0) {
            dmin = d;
            cand = i;
        }
    }
    return cand;
}

int lsf_first_stage_search(const Word16* target) { return lsf_first_stage_search_scalar(target); }

int lsf_second_stage_search(const Word16* target, const Word16* cb1, const Word16* w, int first) {
    Word16 buf[5];
    for (int j = 0; j < 5; ++j) buf[j] = sub(target[first + j], cb1[first + j]);
    int index = 0;
    Word32 dmin = MAX_32;
    for (int k = 0; k < 32; ++k) {
        Word32 d = 0;
        for (int j = 0; j < 5; ++j) {
            const Word16 t = sub(buf[j], lspcb2[k][first + j]);
            d = L_mac(d, mult(w[first + j], t), t);
        }
        if (L_sub(d, dmin) < 0) {
            dmin = d;
            index = k;
        }
    }
    return index;
}

ZEPS_END_VARIANT
