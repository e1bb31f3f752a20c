/* SPDX-License-Identifier: BSD-3-Clause */
/*
 * Echo-canceller sub-band filter bank round trip: analysis then synthesis of
 * a raw 8 kHz 16-bit little-endian PCM file with the built-in configuration
 * B (64-point FFT, 44-sample frames, 256-tap window), 16-bit precision.
 * An echo canceller adapts its filters on the 33 sub-band values of each
 * frame between the two calls; here they pass unchanged.
 *
 *   subband_round_trip IN.s16 OUT.s16
 *
 * Writes the resynthesised speech (whole frames) and prints the bank's delay
 * and the SNR of the output, delayed and scaled, against the input.
 */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include <zepsc.h>

enum { ORDER = 6, F = 44, L = 256, BINS = (1 << ORDER) / 2 + 1 };

/* Reads the whole file; returns the sample count or -1. */
static long read_pcm(const char* path, Zep16s** pcm) {
    FILE* f = fopen(path, "rb");
    long n = 0, cap = 8000;
    unsigned char b[2];
    *pcm = f ? (Zep16s*)malloc((size_t)cap * sizeof(Zep16s)) : NULL;
    if (*pcm == NULL) return -1;
    while (fread(b, 1, 2, f) == 2) {
        if (n == cap) {
            Zep16s* p = (Zep16s*)realloc(*pcm, (size_t)(cap *= 2) * sizeof(Zep16s));
            if (p == NULL) return -1;
            *pcm = p;
        }
        (*pcm)[n++] = (Zep16s)(b[0] | (b[1] << 8));
    }
    fclose(f);
    return n;
}

/* Delay of y against x (0..2L) by normalised correlation, the least-squares
 * gain, and the SNR of x against gain * y, skipping the first L samples. */
static void delay_and_snr(const Zep16s* x, const Zep16s* y, long n, int* delay, double* gain, double* snr) {
    double best = -2, sig = 0, err = 0;
    int d;
    long i;
    for (d = 0; d <= 2 * L; ++d) {
        double xy = 0, yy = 0, xx = 0, c;
        for (i = L; i + d < n; ++i) {
            xy += (double)x[i] * y[i + d];
            yy += (double)y[i + d] * y[i + d];
            xx += (double)x[i] * x[i];
        }
        c = xy / sqrt(xx * yy + 1e-30);
        if (c > best) {
            best = c;
            *delay = d;
            *gain = yy > 0 ? xy / yy : 0;
        }
    }
    for (i = L; i + *delay < n; ++i) {
        const double e = x[i] - *gain * y[i + *delay];
        sig += (double)x[i] * x[i];
        err += e * e;
    }
    *snr = err > 0 ? 10 * log10(sig / err) : 99.0;
}

int main(int argc, char** argv) {
    int state_size = 0, init_size = 0, buf_size = 0, delay = 0;
    double gain = 0, snr = 0;
    Zep8u *analysis, *synthesis, *work;
    Zep16s *in, *out;
    Zep32sc bands[BINS];
    long n, frames, t;
    FILE* f;

    if (argc != 3) {
        fprintf(stderr, "usage: %s IN.s16 OUT.s16\n", argv[0]);
        return 2;
    }
    n = read_pcm(argv[1], &in);
    if (n < 0) {
        fprintf(stderr, "cannot read %s\n", argv[1]);
        return 1;
    }
    frames = n / F;
    /* One state for the analysis, one for the synthesis, one work buffer;
     * the built-in window (null) needs no initialisation buffer (size 0). */
    if (zepsSubbandProcessGetSize_16s(ORDER, L, &state_size, &init_size, &buf_size) != zepStsNoErr) return 1;
    analysis = (Zep8u*)malloc((size_t)state_size);
    synthesis = (Zep8u*)malloc((size_t)state_size);
    work = (Zep8u*)malloc((size_t)buf_size);
    out = (Zep16s*)calloc((size_t)(frames * F) + 1, sizeof(Zep16s));
    if (analysis == NULL || synthesis == NULL || work == NULL || out == NULL ||
        zepsSubbandProcessInit_16s(analysis, ORDER, F, L, NULL, NULL) != zepStsNoErr ||
        zepsSubbandProcessInit_16s(synthesis, ORDER, F, L, NULL, NULL) != zepStsNoErr)
        return 1;

    for (t = 0; t < frames; ++t) {
        if (zepsSubbandAnalysis_16s32sc_Sfs(in + t * F, bands, analysis, 0, work) != zepStsNoErr ||
            zepsSubbandSynthesis_32sc16s_Sfs(bands, out + t * F, synthesis, 0, work) != zepStsNoErr)
            return 1;
    }

    f = fopen(argv[2], "wb");
    if (f == NULL) return 1;
    for (t = 0; t < frames * F; ++t) {
        const unsigned char b[2] = {(unsigned char)(out[t] & 0xff), (unsigned char)((out[t] >> 8) & 0xff)};
        fwrite(b, 1, 2, f);
    }
    fclose(f);
    delay_and_snr(in, out, frames * F, &delay, &gain, &snr);
    printf("configuration B, 16-bit: delay %d samples (%.2f ms), gain %.4f, SNR %.2f dB\n", delay, delay / 8.0, gain,
           snr);
    free(in);
    free(out);
    free(analysis);
    free(synthesis);
    free(work);
    return 0;
}
