/* SPDX-License-Identifier: BSD-3-Clause */
/*
 * Minimal zepsc consumer: the G.729 linear-prediction chain on a raw 8 kHz
 * 16-bit little-endian PCM file, frame by frame, in the standard's order:
 * pre-processing high-pass, windowed autocorrelation, lag window,
 * Levinson-Durbin, LP to LSP, LSP quantisation, quantised LSP back to LP.
 * Prints the packed LSP indices of every 10 ms frame.
 *
 * Build against an installed zepsc with CMake (find_package(zepsc), target
 * zepsc::zepsc) or with pkg-config (`cc g729_lp_chain.c $(pkg-config --cflags
 * --libs zepsc)`).
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <zepsc.h>

enum { FRAME = 80, WINDOW = 240, ORDER = 10 };

int main(int argc, char** argv) {
    static const Zep16s hp140[6] = {1899, -3798, 1899, 4096, 7807, -3733}; /* b0 b1 b2 a0 a1 a2, Q12 */
    static const Zep16s lsp_reset[ORDER] = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};
    static const Zep16s freq_reset[ORDER] = {2339, 4679, 7018, 9358, 11698, 14037, 16377, 18717, 21056, 23396};
    Zep16s window[WINDOW] = {0}, lsp_old[ORDER], freq_prev[4 * ORDER], a[ORDER + 1] = {4096};
    Zep32s hp_size = 0;
    long frames = 0;
    unsigned long checksum = 0;
    FILE* f;
    Zep8u* hp;
    int i;

    if (argc != 2) {
        fprintf(stderr, "usage: %s FILE.s16\n", argv[0]);
        return 2;
    }
    f = fopen(argv[1], "rb");
    if (f == NULL) {
        fprintf(stderr, "cannot open %s\n", argv[1]);
        return 1;
    }
    memcpy(lsp_old, lsp_reset, sizeof lsp_old);
    for (i = 0; i < 4; ++i) memcpy(freq_prev + i * ORDER, freq_reset, sizeof freq_reset);
    zepsHighPassFilterSize_G729(&hp_size);
    hp = (Zep8u*)malloc((size_t)hp_size);
    if (hp == NULL || zepsHighPassFilterInit_G729(hp140, hp) != zepStsNoErr) return 1;

    for (;;) {
        unsigned char raw[2 * FRAME];
        Zep16s* cur = window + WINDOW - FRAME;
        Zep16s norm = 0, rc[ORDER], err = 0, a_new[ORDER + 1], lsp[ORDER], qlsp[ORDER], idx[2], aq[ORDER + 1];
        Zep32s r[13];
        if (fread(raw, 1, sizeof raw, f) != sizeof raw) break;
        memmove(window, window + FRAME, (WINDOW - FRAME) * sizeof(Zep16s));
        for (i = 0; i < FRAME; ++i) cur[i] = (Zep16s)(raw[2 * i] | (raw[2 * i + 1] << 8));

        zepsHighPassFilter_G729_16s_ISfs(cur, FRAME, 12, hp);
        zepsAutoCorr_G729B(window, &norm, r);
        zepsLagWindow_G729_32s_I(r + 1, ORDER);
        if (zepsLevinsonDurbin_G729_32s16s(r, ORDER, a_new, rc, &err) == zepStsNoErr) memcpy(a, a_new, sizeof a);
        zepsLPCToLSP_G729_16s(a, lsp_old, lsp);
        memcpy(lsp_old, lsp, sizeof lsp);
        zepsLSPQuant_G729_16s(lsp, freq_prev, qlsp, idx);
        zepsLSPToLPC_G729_16s(qlsp, aq);

        printf("%ld %d %d\n", frames, idx[0], idx[1]);
        for (i = 0; i <= ORDER; ++i) checksum = checksum * 31u + (unsigned short)aq[i];
        ++frames;
    }
    fclose(f);
    free(hp);
    printf("frames %ld, checksum of the quantised LP coefficients %08lx\n", frames, checksum & 0xfffffffful);
    return 0;
}
