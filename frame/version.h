/* SPDX-License-Identifier: BSD-3-Clause */
// Version records of the processor builds.
#pragma once

#include "zepsc.h"

namespace zeps {
/// Index 0: build "u8"; index 1: build "n8" (x86-64); index 2: the one
/// generic build "gen" of other hosts.
extern const ZepLibraryVersion kLibVersion[3];
}  // namespace zeps
