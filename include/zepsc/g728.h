/* SPDX-License-Identifier: BSD-3-Clause */
/*
 * zepsc/g728.h - G.728 stages.
 *
 * Included by zepsc.h; see the notes there on the conventions every export
 * follows. Every export of this family is declared here exactly once, as
 *     ZEPSAPI <return type> <name>(<parameters>);
 */
#ifndef ZEPSC_G728_H
#define ZEPSC_G728_H

#include "zepsc/frame.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup g728 G.728
 *  Hybrid-window backward LPC, codebook search, synthesis and post-filter (ITU-T G.728).
 *  @{ */
/* ---- g728: declarations go here ---- */
/** @} */

#ifdef __cplusplus
}
#endif

#endif /* ZEPSC_G728_H */
