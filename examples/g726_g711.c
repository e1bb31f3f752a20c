/* SPDX-License-Identifier: BSD-3-Clause */
/*
 * G.726 over a G.711 mu-law channel: a raw 8 kHz 16-bit little-endian PCM
 * file is mu-law companded (ITU-T G.711), the G.711 codes are expanded to
 * the G.726 encoder's 14-bit linear input, coded with ITU-T G.726 at the rate
 * chosen, decoded straight back to mu-law codes (the decoder's G.711 output
 * with its synchronous coding adjustment) and expanded to 16-bit PCM again.
 *
 *   g726_g711 IN.s16 OUT.s16 [16|24|32|40]
 *
 * Writes the decoded speech as raw 16-bit PCM and prints the SNR of the
 * round trip against the input.
 */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <zepsc.h>

enum { BLOCK = 160 };

/* G.711 mu-law: 16-bit linear sample to its code (bits inverted, as sent). */
static unsigned char mulaw_compress(int x) {
    int sign = 0, seg = 0, mag = x >> 2; /* 14-bit value */
    if (mag < 0) {
        mag = -mag;
        sign = 0x80;
    }
    mag += 33; /* plus the bias */
    if (mag > 8191) mag = 8191;
    while (seg < 7 && (mag >> (seg + 6)) != 0) ++seg;
    return (unsigned char)~(sign | (seg << 4) | ((mag >> (seg + 1)) & 0x0f));
}

/* G.711 mu-law code to its 16-bit linear value. */
static int mulaw_expand(unsigned char code) {
    const int c = ~code & 0xff;
    const int seg = (c >> 4) & 7;
    const int mag = ((((c & 0x0f) << 1) + 33) << seg) - 33; /* 14-bit magnitude */
    return (c & 0x80) ? -(mag << 2) : (mag << 2);
}

static int rate_code(int kbits) {
    switch (kbits) {
        case 16: return zepRateG726_16;
        case 24: return zepRateG726_24;
        case 32: return zepRateG726_32;
        case 40: return zepRateG726_40;
    }
    return -1;
}

int main(int argc, char** argv) {
    const int kbits = argc > 3 ? atoi(argv[3]) : 32;
    const int rate = rate_code(kbits);
    Zep32s esize = 0, dsize = 0;
    ZepG726EncodeState* enc;
    ZepG726DecodeState* dec;
    FILE *in, *out;
    double sig = 0, err = 0;
    long total = 0;

    if (argc < 3 || argc > 4 || rate < 0) {
        fprintf(stderr, "usage: %s IN.s16 OUT.s16 [16|24|32|40]\n", argv[0]);
        return 2;
    }
    in = fopen(argv[1], "rb");
    out = fopen(argv[2], "wb");
    if (in == NULL || out == NULL) {
        fprintf(stderr, "cannot open %s\n", in == NULL ? argv[1] : argv[2]);
        return 1;
    }
    /* State blocks are the caller's: ask the size, allocate, initialise. */
    zepsEncodeGetStateSize_G726_16s8u(&esize);
    zepsDecodeGetStateSize_G726_8u16s(&dsize);
    enc = (ZepG726EncodeState*)malloc((size_t)esize);
    dec = (ZepG726DecodeState*)malloc((size_t)dsize);
    if (enc == NULL || dec == NULL || zepsEncodeInit_G726_16s8u(enc, rate) != zepStsNoErr ||
        zepsDecodeInit_G726_8u16s(dec, rate, 0 /* mu-law output */) != zepStsNoErr)
        return 1;

    for (;;) {
        unsigned char raw[2 * BLOCK], codes[BLOCK];
        Zep16s pcm[BLOCK], lin14[BLOCK], g711_out[BLOCK];
        const int n = (int)(fread(raw, 2, BLOCK, in));
        int i;
        if (n <= 0) break;
        for (i = 0; i < n; ++i) {
            pcm[i] = (Zep16s)(raw[2 * i] | (raw[2 * i + 1] << 8));
            lin14[i] = (Zep16s)(mulaw_expand(mulaw_compress(pcm[i])) >> 2);
        }
        if (zepsEncode_G726_16s8u(enc, lin14, codes, n) != zepStsNoErr ||
            zepsDecode_G726_8u16s(dec, codes, g711_out, n) != zepStsNoErr)
            return 1;
        for (i = 0; i < n; ++i) {
            const int y = mulaw_expand((unsigned char)g711_out[i]);
            raw[2 * i] = (unsigned char)(y & 0xff);
            raw[2 * i + 1] = (unsigned char)((y >> 8) & 0xff);
            sig += (double)pcm[i] * pcm[i];
            err += (double)(pcm[i] - y) * (pcm[i] - y);
        }
        fwrite(raw, 2, (size_t)n, out);
        total += n;
    }
    fclose(in);
    fclose(out);
    free(enc);
    free(dec);
    printf("G.726 %d kbit/s over mu-law: %ld samples, SNR %.2f dB\n", kbits, total,
           err > 0 ? 10 * log10(sig / err) : 99.0);
    return 0;
}
