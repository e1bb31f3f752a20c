/* SPDX-License-Identifier: BSD-3-Clause */
// The G.729 annex codecs of the zepsc tool that live beside tools/codecs/g729.cpp,
// which registers the one "g729" command and hands them their options.
#pragma once

#include <memory>
#include <vector>

#include "tools/codec.h"

namespace zepsc_g729 {

/// Bit rates of an Annex D coder, per frame.
enum class RateD { R6k4, R8k };

/// The Annex D encoder: a fixed rate, or one rate a frame from `schedule`
/// (used when not empty; the input must not outlast it).
std::unique_ptr<zepsc_cli::FrameEncoder> make_g729d_encoder(RateD rate, std::vector<RateD> schedule, bool serial);

/// The Annex D decoder: in the serial format each frame's size word gives its
/// rate (64 or 80 bits); RTP payloads are all at `rate`.
std::unique_ptr<zepsc_cli::FrameDecoder> make_g729d_decoder(RateD rate, bool serial);

}  // namespace zepsc_g729
