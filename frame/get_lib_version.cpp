// SPDX-License-Identifier: BSD-3-Clause
// zepscGetLibVersion: each build returns the address of its own record.
#include "common/exports.h"
#include "frame/version.h"

ZEPS_BEGIN_VARIANT

const ZepLibraryVersion* zepscGetLibVersion(void) { return &kLibVersion[ZEPS_VARIANT_INDEX]; }

ZEPS_END_VARIANT
