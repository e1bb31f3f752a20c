/* SPDX-License-Identifier: BSD-3-Clause */
/* The header's version macros against the version record of the loaded
 * library and the version the build was configured with (ZEPS_PROJECT_VERSION,
 * "major.minor.patch"). Prints each mismatch; exits 1 on any. */
#include <stdio.h>
#include <string.h>

#include "zepsc.h"

static int check(const char* what, long got, long want) {
    if (got == want) return 0;
    printf("%s: %ld, expected %ld\n", what, got, want);
    return 1;
}

int main(void) {
    const ZepLibraryVersion* v = zepscGetLibVersion();
    char text[32];
    long major = -1, minor = -1, patch = -1;
    int bad = 0;
    if (sscanf(ZEPS_PROJECT_VERSION, "%ld.%ld.%ld", &major, &minor, &patch) != 3) return 1;
    bad |= check("ZEPSC_VERSION_MAJOR vs project", ZEPSC_VERSION_MAJOR, major);
    bad |= check("ZEPSC_VERSION_MINOR vs project", ZEPSC_VERSION_MINOR, minor);
    bad |= check("ZEPSC_VERSION_PATCH vs project", ZEPSC_VERSION_PATCH, patch);
    bad |= check("record major", v->major, ZEPSC_VERSION_MAJOR);
    bad |= check("record minor", v->minor, ZEPSC_VERSION_MINOR);
    bad |= check("record majorBuild", v->majorBuild, ZEPSC_VERSION_PATCH);
    /* The version text opens with the same three numbers, then " (r<build>)". */
    snprintf(text, sizeof text, "%d.%d.%d (r%ld)", ZEPSC_VERSION_MAJOR, ZEPSC_VERSION_MINOR, ZEPSC_VERSION_PATCH,
             (long)v->build);
    if (strcmp(v->version, text) != 0) {
        printf("record version text '%s', expected '%s'\n", v->version, text);
        bad = 1;
    }
    if (!bad) printf("version %s matches the header and the record\n", text);
    return bad;
}
