/* SPDX-License-Identifier: BSD-3-Clause */
/*
 * GSM-AMR voice activity detection (option 1) and DTX, one decision per
 * 20 ms frame, on a raw 8 kHz 16-bit little-endian PCM file, in the order of
 * the 3GPP TS 26.073 encoder at 12.2 kbit/s:
 *   pre-processing high-pass (the G.729 filter: same coefficients),
 *   VAD option 1 on the frame, with the registers the previous frame's
 *   open-loop pitch search left,
 *   DTX handler (speech, or a DTX frame), SID scheduling (first SID after
 *   speech, then an update every 8th DTX frame),
 *   LP analysis (the G.729 stages stand in for the AMR ones) and the
 *   open-loop pitch search that updates the detector's registers.
 *
 *   amr_vad_dtx IN.s16
 *
 * Prints "time_s,vad,frame_type" and one line a frame.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <zepsc.h>

enum { FRAME = 160 };
enum FrameType { SPEECH, SID_FIRST, SID_UPDATE, NO_DATA };
static const char* const kTypeName[] = {"SPEECH", "SID_FIRST", "SID_UPDATE", "NO_DATA"};

typedef struct {
    Zep8u* hp;                    /* pre-processing filter state */
    Zep16s hist[2 * FRAME];       /* pre-processed speech: previous frame, then this one */
    ZepVAD1State_GSMAMR vad;      /* detector state */
    Zep16s wgt_mem[10];           /* weighting-filter memory */
    Zep16s wsp_hist[143];         /* weighted speech before the frame */
    Zep16s old_lags[5];           /* lag history */
    Zep16s gain_flags[2];         /* open-loop gain flags */
    Zep16s regs[8];               /* search registers, see zepsOpenLoopPitchSearchDTXVAD1_GSMAMR_16s */
    Zep16s hangover, elapsed;     /* DTX handler counters */
    int sid_countdown;            /* frames to the next SID update */
    enum FrameType prev_type;
} Encoder;

static int encoder_init(Encoder* e) {
    static const Zep16s hp140[6] = {1899, -3798, 1899, 4096, 7807, -3733}; /* b0 b1 b2 a0 a1 a2, Q12 */
    static const Zep16s regs_reset[8] = {40, 0, 0, 0, 0, 0, 0, 13106};
    Zep32s size = 0;
    int i;
    memset(e, 0, sizeof *e);
    zepsHighPassFilterSize_G729(&size);
    e->hp = (Zep8u*)malloc((size_t)size);
    if (e->hp == NULL || zepsHighPassFilterInit_G729(hp140, e->hp) != zepStsNoErr) return 0;
    zepsVAD1StateReset_GSMAMR(&e->vad);
    for (i = 0; i < 5; ++i) e->old_lags[i] = 40;
    memcpy(e->regs, regs_reset, sizeof regs_reset);
    e->hangover = 7;
    e->elapsed = 32767;
    e->sid_countdown = 8;
    e->prev_type = SPEECH;
    return 1;
}

/* LP analysis of 240 samples with the G.729 stages; a stays {4096, 0, ...}
 * when the recursion reports an unstable filter. */
static void lp_analysis(const Zep16s* window, Zep16s a[11]) {
    Zep16s norm = 0, rc[10], err = 0, a_new[11];
    Zep32s r[13];
    zepsAutoCorr_G729B(window, &norm, r);
    zepsLagWindow_G729_32s_I(r + 1, 10);
    if (zepsLevinsonDurbin_G729_32s16s(r, 10, a_new, rc, &err) == zepStsNoErr) memcpy(a, a_new, sizeof a_new);
}

/* One frame: returns 0 when a stage fails. */
static int encode_frame(Encoder* e, const Zep16s* frame, Zep16s* vad_flag, enum FrameType* type) {
    Zep16s* cur = e->hist + FRAME;
    Zep16s used_mode = zepRateGSMAMR_122, sid = 0, a[11] = {4096}, lpc[44], wsp[FRAME], lags[2];
    int s, ok;

    memmove(e->hist, cur, FRAME * sizeof(Zep16s));
    memcpy(cur, frame, FRAME * sizeof(Zep16s));
    ok = zepsHighPassFilter_G729_16s_ISfs(cur, FRAME, 12, e->hp) == zepStsNoErr;

    /* The detector reads the pitch, tone and correlation registers of the
     * previous frame's search; it may clear the pitch register's top bits. */
    e->vad.pitch = e->regs[4];
    ok &= zepsVAD1_GSMAMR_16s(cur - 40, &e->vad, vad_flag, e->regs[7], e->regs[3]) == zepStsNoErr;
    e->regs[4] = e->vad.pitch;

    ok &= zepsEncDTXHandler_GSMAMR_16s(&e->hangover, &e->elapsed, &used_mode, &sid, *vad_flag) == zepStsNoErr;
    if (used_mode != zepRateDTX) {
        e->sid_countdown = 8;
        *type = SPEECH;
    } else if (--e->sid_countdown, e->prev_type == SPEECH) {
        *type = SID_FIRST;
        e->sid_countdown = 3;
    } else if (e->sid_countdown <= 0) {
        *type = SID_UPDATE;
        e->sid_countdown = 8;
    } else {
        *type = NO_DATA;
    }
    e->prev_type = *type;

    /* One LP set for the four subframes, then the open-loop search. */
    lp_analysis(cur + FRAME - 240, a);
    for (s = 0; s < 4; ++s) memcpy(lpc + 11 * s, a, sizeof a);
    ok &= zepsOpenLoopPitchSearchDTXVAD1_GSMAMR_16s(lpc, cur - 10, e->wgt_mem, e->wsp_hist, e->old_lags,
                                                    e->gain_flags, e->regs, wsp, lags,
                                                    zepRateGSMAMR_122) == zepStsNoErr;
    return ok;
}

int main(int argc, char** argv) {
    Encoder enc;
    FILE* f;
    long n = 0;

    if (argc != 2) {
        fprintf(stderr, "usage: %s IN.s16\n", argv[0]);
        return 2;
    }
    f = fopen(argv[1], "rb");
    if (f == NULL) {
        fprintf(stderr, "cannot open %s\n", argv[1]);
        return 1;
    }
    if (!encoder_init(&enc)) return 1;
    printf("time_s,vad,frame_type\n");
    for (;; n += FRAME) {
        unsigned char raw[2 * FRAME];
        Zep16s frame[FRAME], vad = 0;
        enum FrameType type;
        int i;
        if (fread(raw, 1, sizeof raw, f) != sizeof raw) break;
        for (i = 0; i < FRAME; ++i) frame[i] = (Zep16s)(raw[2 * i] | (raw[2 * i + 1] << 8));
        if (!encode_frame(&enc, frame, &vad, &type)) {
            fprintf(stderr, "a stage failed at sample %ld\n", n);
            return 1;
        }
        printf("%.2f,%d,%s\n", n / 8000.0, vad, kTypeName[type]);
    }
    fclose(f);
    free(enc.hp);
    return 0;
}
