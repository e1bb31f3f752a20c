/* SPDX-License-Identifier: BSD-3-Clause */
/*
 * zepsc/rta.h - RT Audio stages (float).
 *
 * Included by zepsc.h; see the notes there on the conventions every export
 * follows. Every export of this family is declared here exactly once, as
 *     ZEPSAPI <return type> <name>(<parameters>);
 */
#ifndef ZEPSC_RTA_H
#define ZEPSC_RTA_H

#include "zepsc/frame.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup rta RT Audio
 *  QMF bands, LSP quantisation, codebook searches, noise filter and post-filter.
 *  @{ */
/* ---- rta: declarations go here ---- */
/** @} */

#ifdef __cplusplus
}
#endif

#endif /* ZEPSC_RTA_H */
