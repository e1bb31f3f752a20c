// SPDX-License-Identifier: BSD-3-Clause
#include "tests/codecs/codec_replay.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <unistd.h>

#include "zepsc.h"

namespace zeps::codec_test {

std::string shared_dir() {
    const char* env = std::getenv("ZEPS_SHARED_DIR");
    return env && *env ? env : ZEPS_SHARED_DIR;
}

std::string temp_file(const std::string& stem) {
    return (std::filesystem::temp_directory_path() / (stem + "_" + std::to_string(::getpid()))).string();
}

std::vector<std::uint8_t> read_bytes(const std::string& path) {
    std::ifstream f(path, std::ios::binary);
    if (!f) {
        ADD_FAILURE() << "cannot open " << path;
        return {};
    }
    return {std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>()};
}

std::vector<std::int16_t> read_pcm(const std::string& path) {
    const std::vector<std::uint8_t> b = read_bytes(path);
    std::vector<std::int16_t> pcm(b.size() / 2);
    for (std::size_t i = 0; i < pcm.size(); ++i)
        pcm[i] = static_cast<std::int16_t>(b[2 * i] | (b[2 * i + 1] << 8));
    return pcm;
}

const zepsc_cli::CodecSpec& codec(const std::string& name) {
    const zepsc_cli::CodecSpec* c = zepsc_cli::find_codec(name);
    if (!c) throw std::runtime_error("no codec named " + name);
    return *c;
}

namespace {
template <class T>
void expect_same(const std::vector<T>& got, const std::vector<T>& want, std::size_t frame, const std::string& what,
                 const char* unit) {
    if (got == want) return;
    std::size_t i = 0;
    while (i < got.size() && i < want.size() && got[i] == want[i]) ++i;
    ADD_FAILURE() << what << ": " << got.size() << " " << unit << " against " << want.size() << " expected; first "
                  << "difference at " << unit << " " << i << " (frame " << i / frame << ")";
}
}  // namespace

void expect_same_bytes(const std::vector<std::uint8_t>& got, const std::vector<std::uint8_t>& want,
                       std::size_t frame_bytes, const std::string& what) {
    expect_same(got, want, frame_bytes, what, "bytes");
}

void expect_same_pcm(const std::vector<std::int16_t>& got, const std::vector<std::int16_t>& want,
                     std::size_t frame_samples, const std::string& what) {
    expect_same(got, want, frame_samples, what, "samples");
}

// Every test here reads the shared reference data: without it the whole
// program is skipped with one message saying where the data is expected
// (unless ZEPS_REQUIRE_SHARED_DATA asks for the data).
class SharedDataEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        std::error_code ec;
        if (std::filesystem::exists(shared_dir() + "/codecs", ec)) return;
        // With ZEPS_REQUIRE_SHARED_DATA set the tests run and fail on the
        // files they cannot open.
        const char* required = std::getenv("ZEPS_REQUIRE_SHARED_DATA");
        if (required && *required && std::strcmp(required, "0") != 0) return;
        const std::string where = shared_dir() +
                                  "/codecs (the whole-codec replays read the reference streams from the folder named "
                                  "by ZEPS_SHARED_DIR, default " ZEPS_SHARED_DIR ")";
        GTEST_SKIP() << "shared data not found: " << where;
    }
};
[[maybe_unused]] ::testing::Environment* const g_shared_data_env =
    ::testing::AddGlobalTestEnvironment(new SharedDataEnvironment);

// Every replay runs on the processor build ctest asked for (u8 or n8): by
// name (ZEPS_EXPECT_BUILD), or by the feature mask the core test double was
// given (MOVBE, bit 0x20, selects n8).
TEST(CodecBuild, IsTheOneAskedFor) {
    const char* want = std::getenv("ZEPS_EXPECT_BUILD");
    const char* mask = std::getenv("ZEPCORE_TEST_MASK");
    const char* path = std::getenv("LD_LIBRARY_PATH");
    if (!want && mask) want = (std::strtoull(mask, nullptr, 16) & 0x20) ? "n8" : "u8";
    if (!want && path && std::strstr(path, "fakecore"))
        FAIL() << "the core test double is loaded but no build was asked for: the replays run on one build only";
    if (!want) GTEST_SKIP() << "run outside ctest: whichever build this processor selects";
    EXPECT_STREQ(zepscGetLibVersion()->targetCpu, want);
}

}  // namespace zeps::codec_test
