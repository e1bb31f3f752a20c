// Helpers of the G.729 LP tests: replay of a .vec file through both builds.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "frame/variants.h"
#include "tests/vec_reader.h"

namespace zeps::test::g729lp {

inline constexpr std::int16_t kCanary16 = 0x5a5a;
inline constexpr std::int32_t kCanary32 = 0x5a5a5a5a;

/// Buffer for argument `name` before the call: its input value for io
/// arguments, the recorded content for "# unchanged" outputs, else canaries.
template <class T>
std::vector<T> before(const VecCase& c, const std::string& name) {
    if (const VecArg* a = c.input(name)) return a->as<T>();
    const VecArg& o = c.out(name);
    if (o.unchanged) return o.as<T>();
    return std::vector<T>(o.size(), static_cast<T>(sizeof(T) == 2 ? kCanary16 : kCanary32));
}

/// Counts the cases of one replay whose outputs or status differ.
class Checker {
public:
    explicit Checker(std::string variant) : variant_(std::move(variant)) {}
    template <class T>
    void out(const VecCase& c, const std::string& name, const std::vector<T>& got) {
        const std::vector<T> want = c.out(name).template as<T>();
        if (got != want) fail(c, name);
    }
    void ret(const VecCase& c, int got) {
        if (got != c.ret) fail(c, "status " + std::to_string(got) + " != " + std::to_string(c.ret));
    }
    int failures() const { return failures_; }

private:
    void fail(const VecCase& c, const std::string& what) {
        if (++failures_ <= 5) ADD_FAILURE() << variant_ << " case " << c.number << ": " << what;
    }
    std::string variant_;
    int failures_ = 0;
};

/// Replays every case of vectors/g729/<file> through fn_u8 and fn_n8 with
/// body(fn, case, checker); returns the number of cases.
template <class Fn, class Body>
int replay(const std::string& file, Fn fn_u8, Fn fn_n8, Body body) {
    const VecFile vf = load_vec(shared_path("vectors/g729/" + file));
    for (auto [name, fn] : {std::pair<const char*, Fn>{"u8", fn_u8}, std::pair<const char*, Fn>{"n8", fn_n8}}) {
        Checker ck(name);
        body(fn, vf, ck);
        EXPECT_EQ(ck.failures(), 0) << file << " on " << name;
    }
    return static_cast<int>(vf.cases.size());
}

/// Replays independent cases: body(fn, case, checker) for each case.
template <class Fn, class Body>
int replay_cases(const std::string& file, Fn fn_u8, Fn fn_n8, Body body) {
    return replay(file, fn_u8, fn_n8, [&](Fn fn, const VecFile& vf, Checker& ck) {
        for (const VecCase& c : vf.cases) body(fn, c, ck);
    });
}

}  // namespace zeps::test::g729lp
