/* SPDX-License-Identifier: BSD-3-Clause */
// The G.729 Annex E (11.8 kbit/s) decoder of the zepsc tool, built in
// tools/codecs/g729e.cpp; tools/codecs/g729.cpp dispatches to it for
// `--annex E` (the Annex E encoder is the Annex I encoder held to 8 and
// 11.8 kbit/s without DTX).
#pragma once

#include <memory>
#include <string>

#include "tools/codec.h"

namespace zepsc_cli::g729e {

/// The Annex E decoder (serial .bit format; frames of 118 or 80 bits).
std::unique_ptr<FrameDecoder> make_decoder();

}  // namespace zepsc_cli::g729e
