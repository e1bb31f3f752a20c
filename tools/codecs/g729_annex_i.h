/* SPDX-License-Identifier: BSD-3-Clause */
// The integrated G.729 coder (Annex I) of the zepsc tool, built in
// tools/codecs/g729i.cpp (decoder) and tools/codecs/g729i_encoder.cpp;
// tools/codecs/g729.cpp dispatches to it for `--annex I`, and for `--annex E`
// to its decoder under Annex E's rules and to its encoder held to 8 and
// 11.8 kbit/s without DTX.
#pragma once

#include <memory>
#include <vector>

#include "tools/codec.h"

namespace zepsc_g729 {

/// The Annex I decoder (serial .bit format): each frame's size word gives
/// its type (118, 80, 64 bits, 16 = SID, 0 = untransmitted).
std::unique_ptr<zepsc_cli::FrameDecoder> make_g729i_decoder();

/// The Annex E decoder (serial .bit format; frames of 118 or 80 bits): the
/// same frame loop under Annex E's rules of erasure (tools/codecs/g729i.cpp).
std::unique_ptr<zepsc_cli::FrameDecoder> make_g729e_decoder();

/// Frame rates of the integrated coder, numbered as its rate files code them.
enum class RateI { R6k4 = 0, R8k = 1, R11k8 = 2 };

/// The integrated encoder (tools/codecs/g729i_encoder.cpp): every frame at
/// rate, or at schedule[frame] when schedule is not empty (the encoder
/// fails when the schedule ends before the speech); dtx adds the VAD and
/// DTX (SID and untransmitted frames).
std::unique_ptr<zepsc_cli::FrameEncoder> make_g729i_encoder(RateI rate, std::vector<RateI> schedule, bool dtx);

}  // namespace zepsc_g729
