// libFuzzer target: the GSM full-rate decoder of `zepsc gsmfr` on arbitrary
// bitstreams. Byte 0 picks the format (bit 0: .gsm or .cod) and whether the
// frames are first made well-formed (bit 1: signature nibble 0xD written
// into every .gsm frame, every .cod word masked to its field width), so
// that most inputs reach the decoder's stages rather than the format
// checks. Any input must give PCM or a CodecError, never a crash.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "tools/codec.h"

namespace {

constexpr int kLarBits[8] = {6, 6, 5, 5, 4, 4, 3, 3};
int field_bits(std::size_t i) {
    if (i < 8) return kLarBits[i];
    const std::size_t j = (i - 8) % 17;
    return j == 0 ? 7 : j <= 2 ? 2 : j == 3 ? 6 : 3;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    const bool cod = data[0] & 1, well_formed = data[0] & 2;
    std::vector<std::uint8_t> bits(data + 1, data + size);
    if (well_formed && !cod)
        for (std::size_t at = 0; at < bits.size(); at += 33) bits[at] = static_cast<std::uint8_t>(0xD0 | (bits[at] & 15));
    if (well_formed && cod)
        for (std::size_t w = 0; 2 * w + 1 < bits.size(); ++w) {
            bits[2 * w] = static_cast<std::uint8_t>(bits[2 * w] & ((1 << field_bits(w % 76)) - 1));
            bits[2 * w + 1] = 0;
        }
    const zepsc_cli::CodecSpec* gsmfr = zepsc_cli::find_codec("gsmfr");
    if (gsmfr == nullptr) __builtin_trap();
    try {
        const auto pcm = zepsc_cli::decode_all(*gsmfr, {}, cod ? "cod" : "gsm", bits.data(), bits.size());
        const std::size_t frame = cod ? 152 : 33;
        if (pcm.size() != bits.size() / frame * 160) __builtin_trap();  // a whole frame gives 160 samples
        for (std::int16_t s : pcm)
            if (s & 7) __builtin_trap();  // 13-bit output
    } catch (const zepsc_cli::CodecError&) {
    }
    return 0;
}
