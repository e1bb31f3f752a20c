/* SPDX-License-Identifier: BSD-3-Clause */
/*
 * zepsc/g7291.h - G.729.1 stages.
 *
 * Included by zepsc.h; see the notes there on the conventions every export
 * follows. Every export of this family is declared here exactly once, as
 *     ZEPSAPI <return type> <name>(<parameters>);
 */
#ifndef ZEPSC_G7291_H
#define ZEPSC_G7291_H

#include "zepsc/frame.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup g7291 G.729.1
 *  MDCT and its quantisation, envelope coding, QMF and layered excitation (ITU-T G.729.1).
 *  @{ */
/* ---- g7291: declarations go here ---- */
/** @} */

#ifdef __cplusplus
}
#endif

#endif /* ZEPSC_G7291_H */
