/* SPDX-License-Identifier: BSD-3-Clause */
/*
 * zepsc/amrwb.h - AMR-WB and AMR-WB+ stages.
 *
 * Included by zepsc.h; see the notes there on the conventions every export
 * follows. Every export of this family is declared here exactly once, as
 *     ZEPSAPI <return type> <name>(<parameters>);
 */
#ifndef ZEPSC_AMRWB_H
#define ZEPSC_AMRWB_H

#include "zepsc/frame.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup amrwb AMR-WB and AMR-WB+
 *  ISF quantisation, VAD, algebraic codebook, gains, filters, transform coding and band splitting (3GPP TS 26.173, 26.304).
 *  @{ */
/* ---- amrwb: declarations go here ---- */
/** @} */

#ifdef __cplusplus
}
#endif

#endif /* ZEPSC_AMRWB_H */
