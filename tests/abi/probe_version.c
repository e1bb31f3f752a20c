/* SPDX-License-Identifier: BSD-3-Clause */
/* Loads libzepsc.so through the dynamic loader and prints the version record
 * of the build it chose: "<targetCpu>|<name>|<version>|<buildDate>". */
#include <stdio.h>

#include "zepsc.h"

int main(void) {
    const ZepLibraryVersion* v = zepscGetLibVersion();
    if (v == NULL) return 1;
    printf("%.4s|%s|%s|%s|%d.%d.%d.%d\n", v->targetCpu, v->name, v->version, v->buildDate, v->major, v->minor,
           v->majorBuild, v->build);
    return 0;
}
