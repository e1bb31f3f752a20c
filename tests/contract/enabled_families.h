// Which families' contract rows take part in the contract checks, the fuzz
// driver and the thread test.
//
// The rows of every family are written in contract_rows_pending.inc, each
// family's block guarded by its ZEPS_ROWS_<FAMILY> macro. Once a family's
// exports are in zepsc.h, enable its block with one line below (or move the
// block into contract_rows.inc). A row whose export is missing or whose
// arguments disagree with the declaration fails Contract.EveryRowKeepsItsContract.
#pragma once

#define ZEPS_ROWS_G729_LP 1     // G.729 LP analysis and LSP quantisation
#define ZEPS_ROWS_G729_PITCH 1  // G.729 pitch analysis and adaptive codebook
#define ZEPS_ROWS_AMR_VAD 1     // GSM-AMR VAD options 1 and 2, open-loop pitch, FFT
#define ZEPS_VAD1_STATE_BYTES sizeof(ZepVAD1State_GSMAMR)
#define ZEPS_VAD2_STATE_BYTES sizeof(ZepVAD2State_GSMAMR)
#define ZEPS_ROWS_AMR_DTX 1     // GSM-AMR DTX buffers and handler
#define ZEPS_ROWS_G726 1        // G.726 ADPCM
#define ZEPS_ROWS_EC 1          // echo-canceller sub-band filter bank

// 1: Contract.EveryExportHasARow fails for an export without a row.
// 0: it only lists them (while families are still being merged).
#define ZEPS_CONTRACT_REQUIRE_EVERY_EXPORT 1
