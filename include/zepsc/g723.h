/* SPDX-License-Identifier: BSD-3-Clause */
/*
 * zepsc/g723.h - G.723.1 stages.
 *
 * Included by zepsc.h; see the notes there on the conventions every export
 * follows. Every export of this family is declared here exactly once, as
 *     ZEPSAPI <return type> <name>(<parameters>);
 */
#ifndef ZEPSC_G723_H
#define ZEPSC_G723_H

#include "zepsc/frame.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup g723 G.723.1
 *  LP analysis, LSF quantisation, MP-MLQ and ACELP excitation, gain quantisation, pitch post-filter (ITU-T G.723.1).
 *  @{ */
/* ---- g723: declarations go here ---- */
/** @} */

#ifdef __cplusplus
}
#endif

#endif /* ZEPSC_G723_H */
