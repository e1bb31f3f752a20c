// SPDX-License-Identifier: BSD-3-Clause
// Test helper: wraps raw 16-bit PCM in a WAV file with a chosen sample rate
// and channel count (used to feed the tool the shared speech corpus and to
// make deliberately wrong inputs).
#include <sndfile.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <vector>

int main(int argc, char** argv) {
    if (argc != 5) {
        std::fprintf(stderr, "usage: make_wav IN.s16 OUT.wav RATE CHANNELS\n");
        return 2;
    }
    std::ifstream in(argv[1], std::ios::binary);
    std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::vector<short> s(bytes.size() / 2);
    for (std::size_t i = 0; i < s.size(); ++i)
        s[i] = static_cast<short>(static_cast<unsigned char>(bytes[2 * i]) | (static_cast<unsigned char>(bytes[2 * i + 1]) << 8));
    SF_INFO info{};
    info.samplerate = std::atoi(argv[3]);
    info.channels = std::atoi(argv[4]);
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* f = sf_open(argv[2], SFM_WRITE, &info);
    if (f == nullptr || s.empty()) return 1;
    const sf_count_t frames = static_cast<sf_count_t>(s.size()) / info.channels;
    sf_writef_short(f, s.data(), frames);
    sf_close(f);
    return 0;
}
