/* SPDX-License-Identifier: BSD-3-Clause */
/*
 * zepsc/alc.h - Automatic level control stages (G.169).
 *
 * Included by zepsc.h; see the notes there on the conventions every export
 * follows. Every export of this family is declared here exactly once, as
 *     ZEPSAPI <return type> <name>(<parameters>);
 */
#ifndef ZEPSC_ALC_H
#define ZEPSC_ALC_H

#include "zepsc/frame.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup alc Automatic level control
 *  Gain and level setting and block-wise level control of 16-bit speech (ITU-T G.169).
 *  @{ */
/* ---- alc: declarations go here ---- */
/** @} */

#ifdef __cplusplus
}
#endif

#endif /* ZEPSC_ALC_H */
