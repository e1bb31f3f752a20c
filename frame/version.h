/* SPDX-License-Identifier: BSD-3-Clause */
// Version records of the two processor builds.
#pragma once

#include "zepsc.h"

namespace zeps {
/// Index 0: build "u8"; index 1: build "n8".
extern const ZepLibraryVersion kLibVersion[2];
}  // namespace zeps
