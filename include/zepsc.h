/* SPDX-License-Identifier: BSD-3-Clause */
/*
 * zepsc.h - the public interface of the zepsc speech-coding primitives.
 *
 * The library exports the numerical stages of ITU-T and 3GPP speech codecs
 * (G.729 and its annexes, GSM-AMR voice activity detection and DTX, G.726
 * ADPCM, the echo-canceller sub-band filter bank). Each fixed-point stage
 * reproduces the standard's fixed-point reference bit for bit; a caller that
 * chains the stages in the standard's order reproduces the reference codec.
 *
 * Conventions shared by every export:
 *  - Every function returns a ZepStatus (zepscGetLibVersion aside): 0 on
 *    success, a negative error code, or a positive warning.
 *  - Required pointers are checked first, in argument order; the first null
 *    one gives zepStsNullPtrErr. Lengths and ranges are checked next, in the
 *    order each function documents. Nothing is written before all checks
 *    pass, so an error leaves every caller buffer as it was.
 *  - Fixed-point results saturate exactly where the standard's basic
 *    operators saturate.
 *  - No export allocates, locks or keeps hidden state: all memory is the
 *    caller's, so calls on distinct buffers may run on any threads at once.
 *
 * This header compiles as C99, C11 and C++.
 *
 * Every exported function is declared exactly once, in the family header
 * below that holds its stage (include/zepsc/<family>.h), in the form
 *     ZEPSAPI <return type> <name>(<parameters>);
 * The build reads these declarations, in the order the headers are included
 * here, to generate the library's dispatch table, forwarding entries and
 * export catalogue, so they are the one list of exports. Callers include
 * this file, not the family headers one by one.
 */
#ifndef ZEPSC_H
#define ZEPSC_H

#include "zepsc/frame.h"
#include "zepsc/common.h"
#include "zepsc/g729.h"
#include "zepsc/g723.h"
#include "zepsc/amr.h"
#include "zepsc/amrwb.h"
#include "zepsc/g728.h"
#include "zepsc/g722.h"
#include "zepsc/ec.h"
#include "zepsc/rta.h"
#include "zepsc/alc.h"
#include "zepsc/g7291.h"

#endif /* ZEPSC_H */
