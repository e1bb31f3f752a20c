/* SPDX-License-Identifier: BSD-3-Clause */
/*
 * The smallest zepsc program: prints the version of the header it was built
 * with, the version record of the processor build the library chose when it
 * was loaded, and the processor features the core library reports.
 *
 *   hello
 */
#include <stdio.h>

#include <zepcore.h>
#include <zepsc.h>

int main(void) {
    const ZepLibraryVersion* v = zepscGetLibVersion();
    const unsigned long long features = (unsigned long long)zepGetEnabledCpuFeatures();
    printf("header %d.%d.%d\n", ZEPSC_VERSION_MAJOR, ZEPSC_VERSION_MINOR, ZEPSC_VERSION_PATCH);
    printf("library %s %s, build %.4s\n", v->name, v->version, v->targetCpu);
    printf("cpu features %#llx (SSSE3 %s, MOVBE %s)\n", features, (features & ZEP_CPU_SSSE3) ? "yes" : "no",
           (features & ZEP_CPU_MOVBE) ? "yes" : "no");
    return 0;
}
