/* SPDX-License-Identifier: BSD-3-Clause */
// Both processor builds must give bit-identical outputs, statuses and states.
// Each export registers one check with ZEPS_VARIANT_CHECK(name); the check
// draws seeded inputs (typical, extreme and invalid), calls zeps::u8::name
// and zeps::n8::name on identical copies and compares every byte written.
// A test fails when an export of the list has no check.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "frame/variants.h"

namespace zeps::test {

/// Small deterministic generator (SplitMix64) for reproducible inputs.
class Rng {
public:
    explicit Rng(std::uint64_t seed) : s_(seed) {}
    std::uint64_t next() {
        std::uint64_t z = (s_ += 0x9e3779b97f4a7c15ull);
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
        return z ^ (z >> 31);
    }
    /// Uniform integer in [lo, hi].
    std::int64_t uniform(std::int64_t lo, std::int64_t hi) {
        return lo + static_cast<std::int64_t>(next() % static_cast<std::uint64_t>(hi - lo + 1));
    }
    /// A 16-bit value: mostly moderate, sometimes an extreme.
    std::int16_t s16() {
        switch (next() % 8) {
            case 0: return static_cast<std::int16_t>(uniform(0, 1) ? 32767 : -32768);
            case 1: return static_cast<std::int16_t>(uniform(-4, 4));
            default: return static_cast<std::int16_t>(uniform(-32768, 32767));
        }
    }
    std::int32_t s32() {
        switch (next() % 8) {
            case 0: return uniform(0, 1) ? INT32_MAX : INT32_MIN;
            default: return static_cast<std::int32_t>(next());
        }
    }
    float f32(float scale = 1.0f) {
        return scale * static_cast<float>(static_cast<double>(next() >> 11) * 0x1.0p-53 * 2.0 - 1.0);
    }
    template <class T>
    std::vector<T> vec(std::size_t n);
    bool chance(unsigned one_in) { return next() % one_in == 0; }

private:
    std::uint64_t s_;
};

template <>
inline std::vector<std::int16_t> Rng::vec<std::int16_t>(std::size_t n) {
    std::vector<std::int16_t> v(n);
    for (auto& x : v) x = s16();
    return v;
}
template <>
inline std::vector<std::int32_t> Rng::vec<std::int32_t>(std::size_t n) {
    std::vector<std::int32_t> v(n);
    for (auto& x : v) x = s32();
    return v;
}
template <>
inline std::vector<float> Rng::vec<float>(std::size_t n) {
    std::vector<float> v(n);
    for (auto& x : v) x = f32(1000.0f);
    return v;
}

/// Byte-for-byte equality of two buffers of the same type and size.
template <class T>
::testing::AssertionResult same_bytes(const std::vector<T>& a, const std::vector<T>& b) {
    if (a.size() != b.size()) return ::testing::AssertionFailure() << "sizes differ";
    if (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "buffers differ";
}

using VariantCheckFn = void (*)(Rng&);
struct VariantCheck {
    const char* name;
    VariantCheckFn fn;
};
std::vector<VariantCheck>& variant_checks();
struct RegisterVariantCheck {
    RegisterVariantCheck(const char* name, VariantCheckFn fn) { variant_checks().push_back({name, fn}); }
};

}  // namespace zeps::test

/// Registers the both-builds check of one export; the body receives `rng`.
#define ZEPS_VARIANT_CHECK(export_name)                                            \
    static void zeps_variant_check_##export_name(::zeps::test::Rng& rng);          \
    static const ::zeps::test::RegisterVariantCheck zeps_variant_reg_##export_name( \
        #export_name, &zeps_variant_check_##export_name);                          \
    static void zeps_variant_check_##export_name([[maybe_unused]] ::zeps::test::Rng& rng)
