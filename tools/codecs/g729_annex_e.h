/* SPDX-License-Identifier: BSD-3-Clause */
// The G.729 Annex E (11.8 kbit/s) encoder and decoder of the zepsc tool,
// built in tools/codecs/g729e.cpp; tools/codecs/g729.cpp dispatches to them
// for `--annex E`.
#pragma once

#include <memory>
#include <string>

#include "tools/codec.h"

namespace zepsc_cli::g729e {

/// The Annex E decoder (serial .bit format; frames of 118 or 80 bits).
std::unique_ptr<FrameDecoder> make_decoder();

/// The Annex E encoder: every frame at 11.8 kbit/s, or at the rate of each
/// frame from a rate file (one 16-bit word a frame, 0 = 8 and 1 = 11.8
/// kbit/s, as the ITU sequences' SWITCH file).
std::unique_ptr<FrameEncoder> make_encoder(bool high_rate, const std::string& ratefile);

}  // namespace zepsc_cli::g729e
