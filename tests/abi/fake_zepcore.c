/* SPDX-License-Identifier: BSD-3-Clause */
/* Test double of the core library: same soname, reports the feature mask
 * given in the environment variable ZEPCORE_TEST_MASK (hexadecimal). */
#include <stdint.h>
#include <stdlib.h>

uint64_t zepGetEnabledCpuFeatures(void) {
    const char* m = getenv("ZEPCORE_TEST_MASK");
    return m ? strtoull(m, NULL, 16) : 0;
}

void* zepMalloc(int len) { return len < 1 ? NULL : aligned_alloc(64, ((size_t)len + 63) & ~(size_t)63); }

void zepFree(void* ptr) { free(ptr); }
