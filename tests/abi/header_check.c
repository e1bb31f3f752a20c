/* SPDX-License-Identifier: BSD-3-Clause */
/* Compiled as C99, C11 and C++ by the header tests: the public headers must
 * stand alone in every mode. */
#include "zepsc.h"
#include "core/zepcore.h"

int zeps_header_check(void) {
    ZepStatus s = zepStsNoErr;
    Zep32sc c = {1, 2};
    return (int)s + c.re + (int)sizeof(ZepLibraryVersion);
}
