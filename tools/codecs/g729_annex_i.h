/* SPDX-License-Identifier: BSD-3-Clause */
// The integrated G.729 coder (Annex I) of the zepsc tool, built in
// tools/codecs/g729i.cpp; tools/codecs/g729.cpp dispatches to it for
// `--annex I`.
#pragma once

#include <memory>

#include "tools/codec.h"

namespace zepsc_g729 {

/// The Annex I decoder (serial .bit format): each frame's size word gives
/// its type (118, 80, 64 bits, 16 = SID, 0 = untransmitted).
std::unique_ptr<zepsc_cli::FrameDecoder> make_g729i_decoder();

}  // namespace zepsc_g729
