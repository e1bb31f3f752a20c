// Reader of the reference-vector files (.vec) recorded from the ITU-T and
// 3GPP reference code: a list of cases, each a list of named arguments
// (in, out, io) and the expected status.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zeps::test {

struct VecArg {
    std::string dir;   // "in", "out" or "io"
    std::string name;
    std::string type;  // s8 u8 s16 s32 u32 f32
    std::vector<std::int64_t> ints;  // integer types
    std::vector<float> floats;       // f32
    bool unchanged = false;          // "# unchanged" precedes it: must stay untouched

    template <class T>
    std::vector<T> as() const {
        std::vector<T> v;
        if (type == "f32")
            for (float f : floats) v.push_back(static_cast<T>(f));
        else
            for (std::int64_t i : ints) v.push_back(static_cast<T>(i));
        return v;
    }
    std::size_t size() const { return type == "f32" ? floats.size() : ints.size(); }
};

struct VecCase {
    bool reset = false;  // "@ reset" (streams): re-initialise the state
    int number = 0;
    std::vector<std::string> comments;  // '#' lines inside the case
    std::vector<VecArg> args;           // in file order
    bool has_ret = false;
    int ret = 0;

    /// The value before the call: the first 'in' or 'io' argument of that name.
    const VecArg* input(const std::string& name) const;
    /// The value after the call: the last 'out' or 'io' argument of that name.
    const VecArg* output(const std::string& name) const;
    /// Like input()/output() but fail the calling test when absent.
    const VecArg& in(const std::string& name) const;
    const VecArg& out(const std::string& name) const;
    bool has_comment(const std::string& text) const;
};

struct VecFile {
    std::vector<std::string> header;  // leading '#' lines
    bool stream = false;
    std::vector<VecCase> cases;
};

/// The shared data folder (vectors/, speech/, codecs/): $ZEPS_SHARED_DIR
/// when set, else the folder the build was configured with.
std::string shared_dir();
/// Path of a file below the shared folder (vectors/..., speech/...).
std::string shared_path(const std::string& rel);
/// Why shared_path(rel) cannot be read (none when it can): one message
/// saying where the data is expected. With ZEPS_REQUIRE_SHARED_DATA set in
/// the environment (CI sets it), the calling test also fails.
std::optional<std::string> shared_data_missing(const std::string& rel);

/// Skips the calling test (fails it under ZEPS_REQUIRE_SHARED_DATA) when a
/// file or folder below the shared folder is absent.
#define ZEPS_SKIP_WITHOUT_SHARED_DATA(rel)                                              \
    if (const std::optional<std::string> zeps_missing_ = ::zeps::test::shared_data_missing(rel)) \
    GTEST_SKIP() << *zeps_missing_

/// Loads a .vec file; throws std::runtime_error when it cannot be read or parsed.
VecFile load_vec(const std::string& path);

/// Loads raw 16-bit little-endian speech from shared/speech.
std::vector<std::int16_t> load_speech(const std::string& name);

}  // namespace zeps::test
