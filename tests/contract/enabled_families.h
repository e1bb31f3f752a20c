/* SPDX-License-Identifier: BSD-3-Clause */
// Contract coverage switch. Every family's rows live in rows/<family>.inc;
// the build gathers all of them. A row whose export is missing or whose
// arguments disagree with the declaration fails
// Contract.EveryRowKeepsItsContract.
#pragma once

// 1: Contract.EveryExportHasARow fails for an export without a row.
#define ZEPS_CONTRACT_REQUIRE_EVERY_EXPORT 1
