/* SPDX-License-Identifier: BSD-3-Clause */
/*
 * zepcore.h - the core library beneath zepsc: processor features and aligned
 * scratch memory. Compiles as C and C++.
 */
#ifndef ZEPCORE_H
#define ZEPCORE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** @name Processor feature bits reported by zepGetEnabledCpuFeatures
 *  @{ */
#define ZEP_CPU_MMX 0x1ull     /**< MMX */
#define ZEP_CPU_SSE 0x2ull     /**< SSE */
#define ZEP_CPU_SSE2 0x4ull    /**< SSE2 */
#define ZEP_CPU_SSE3 0x8ull    /**< SSE3 */
#define ZEP_CPU_SSSE3 0x10ull  /**< Supplemental SSE3 */
#define ZEP_CPU_MOVBE 0x20ull  /**< MOVBE */
#define ZEP_CPU_SSE41 0x40ull  /**< SSE4.1 */
#define ZEP_CPU_SSE42 0x80ull  /**< SSE4.2 */
#define ZEP_CPU_AVX 0x100ull   /**< AVX, with the operating system saving the YMM state */
/** @} */

/**
 * Returns the mask of processor features that are present and enabled, as
 * the ZEP_CPU_* bits above, read from CPUID (and XGETBV for AVX). The mask is
 * the same on every call.
 */
uint64_t zepGetEnabledCpuFeatures(void);

/**
 * Allocates len bytes aligned to 64 bytes; returns null when len < 1 or the
 * memory is not available. Release with zepFree.
 */
void* zepMalloc(int len);

/** Releases memory from zepMalloc; null is accepted and ignored. */
void zepFree(void* ptr);

#ifdef __cplusplus
}
#endif

#endif /* ZEPCORE_H */
