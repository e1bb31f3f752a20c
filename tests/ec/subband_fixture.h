/* SPDX-License-Identifier: BSD-3-Clause */
// Helpers for the sub-band filter-bank tests: caller blocks at deliberately
// unaligned addresses, a double-precision model of the bank evaluated
// directly (O(N^2) DFT), and a state comparison that allows for the
// pointers a state holds into itself.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "ec/ec_tables.h"
#include "frame/variants.h"
#include "tests/ec/internal_access.h"

namespace zeps::test {

/// Block of `size` bytes starting `skew` bytes past a 16-byte boundary,
/// filled with a canary byte.
struct Block {
    std::vector<std::uint8_t> mem;
    std::uint8_t* p;
    std::size_t size;
    unsigned skew;
    Block(std::size_t n, unsigned skew_, std::uint8_t canary = 0xA5) : mem(n + 32, canary), size(n), skew(skew_ & 15) {
        place();
    }
    Block(const Block& o) : mem(o.mem.size()), size(o.size), skew(o.skew) {
        place();
        std::memcpy(p, o.p, size);  // a fresh copy of the bytes, not of the state
    }
    Block& operator=(const Block&) = delete;
    void place() {
        const auto a = reinterpret_cast<std::uintptr_t>(mem.data());
        p = mem.data() + ((16 - (a & 15)) & 15) + skew;
    }
    std::vector<std::uint8_t> bytes() const { return {p, p + size}; }
};

/// True when two state blocks of equal size hold the same state: pointers
/// into a block (8-byte aligned words inside it) must point at the same
/// offset; every other byte must be equal.
inline ::testing::AssertionResult same_state(const Block& a, const Block& b) {
    if (a.size != b.size) return ::testing::AssertionFailure() << "sizes differ";
    const auto base_a = reinterpret_cast<std::uintptr_t>(a.p), base_b = reinterpret_cast<std::uintptr_t>(b.p);
    std::size_t i = 0;
    while (i < a.size) {
        if ((base_a + i) % 8 == 0 && i + 8 <= a.size) {
            std::uint64_t wa, wb;
            std::memcpy(&wa, a.p + i, 8);
            std::memcpy(&wb, b.p + i, 8);
            if (wa >= base_a && wa < base_a + a.size) {
                if (wb - base_b != wa - base_a) return ::testing::AssertionFailure() << "pointer at byte " << i;
                i += 8;
                continue;
            }
        }
        if (a.p[i] != b.p[i]) return ::testing::AssertionFailure() << "byte " << i << " differs";
        ++i;
    }
    return ::testing::AssertionSuccess();
}

/// The built-in float window of configuration A (len 128) or B (len 256).
inline std::vector<float> builtin_window(int len) {
    const float* half = len == 128 ? kSubbandWinA_32f : kSubbandWinB_32f;
    std::vector<float> w(len);
    for (int n = 0; n < len / 2; ++n) w[n] = w[len - 1 - n] = half[n];
    return w;
}

/// The filter bank evaluated directly in double precision.
struct RefBank {
    int N, F, L;
    std::vector<double> w, d;
    RefBank(int order, int F_, int L_, const std::vector<double>& win)
        : N(1 << order), F(F_), L(L_), w(win), d(L_, 0.0) {}
    std::vector<double> analyse(const std::vector<double>& x) {
        for (int k = 0; k < L - F; ++k) d[k] = d[k + F];
        for (int k = 0; k < F; ++k) d[L - F + k] = x[k];
        std::vector<double> u(N, 0.0);
        for (int n = 0; n < L; ++n) u[n % N] += d[n] * w[n];
        return dft_real(u);
    }
    /// reversed: read the window backwards (the bank's rule) or forwards.
    std::vector<double> synthesise(const std::vector<double>& V, bool reversed = true) {
        const std::vector<double> y = idft_real(V, N);
        for (int k = 0; k < L - F; ++k) d[k] = d[k + F];
        for (int k = L - F; k < L; ++k) d[k] = 0.0;
        for (int n = 0; n < L; ++n) d[n] += y[n % N] * w[reversed ? L - 1 - n : n];
        return {d.begin(), d.begin() + F};
    }
};

/// A float filter bank of one build on unaligned caller blocks.
template <bool N8 = false>
struct Bank32f {
    Block state, buf;
    int N, F;
    ZepStatus init_status;
    static int size(int order, int L, int which) {
        int s = 0, i = 0, b = 0;
        EXPECT_EQ(zeps::u8::zepsSubbandProcessGetSize_32f(order, L, &s, &i, &b), zepStsNoErr);
        return which == 0 ? s : b;
    }
    Bank32f(int order, int F_, int L, const float* win, unsigned skew = 3)
        : state(size(order, L, 0), skew), buf(size(order, L, 1), skew + 5), N(1 << order), F(F_) {
        init_status = N8 ? zeps::n8::zepsSubbandProcessInit_32f(state.p, order, F, L, win, nullptr)
                         : zeps::u8::zepsSubbandProcessInit_32f(state.p, order, F, L, win, nullptr);
    }
    std::vector<Zep32fc> analyse(const float* x) {
        std::vector<Zep32fc> X(N / 2 + 1);
        EXPECT_EQ(N8 ? zeps::n8::zepsSubbandAnalysis_32f32fc(x, X.data(), state.p, buf.p)
                     : zeps::u8::zepsSubbandAnalysis_32f32fc(x, X.data(), state.p, buf.p),
                  zepStsNoErr);
        return X;
    }
    std::vector<float> synthesise(const Zep32fc* V) {
        std::vector<float> y(F);
        EXPECT_EQ(N8 ? zeps::n8::zepsSubbandSynthesis_32fc32f(V, y.data(), state.p, buf.p)
                     : zeps::u8::zepsSubbandSynthesis_32fc32f(V, y.data(), state.p, buf.p),
                  zepStsNoErr);
        return y;
    }
};

/// A 16-bit filter bank of one build on unaligned caller blocks.
template <bool N8 = false>
struct Bank16s {
    Block state, buf;
    int N, F;
    ZepStatus init_status;
    static int size(int order, int L, int which) {
        int s = 0, i = 0, b = 0;
        EXPECT_EQ(zeps::u8::zepsSubbandProcessGetSize_16s(order, L, &s, &i, &b), zepStsNoErr);
        return which == 0 ? s : b;
    }
    Bank16s(int order, int F_, int L, const Zep16s* win, unsigned skew = 7)
        : state(size(order, L, 0), skew), buf(size(order, L, 1), skew + 9), N(1 << order), F(F_) {
        init_status = N8 ? zeps::n8::zepsSubbandProcessInit_16s(state.p, order, F, L, win, nullptr)
                         : zeps::u8::zepsSubbandProcessInit_16s(state.p, order, F, L, win, nullptr);
    }
    std::vector<Zep32sc> analyse(const Zep16s* x, int sf) {
        std::vector<Zep32sc> X(N / 2 + 1);
        EXPECT_EQ(N8 ? zeps::n8::zepsSubbandAnalysis_16s32sc_Sfs(x, X.data(), state.p, sf, buf.p)
                     : zeps::u8::zepsSubbandAnalysis_16s32sc_Sfs(x, X.data(), state.p, sf, buf.p),
                  zepStsNoErr);
        return X;
    }
    std::vector<Zep16s> synthesise(const Zep32sc* V, int sf) {
        std::vector<Zep16s> y(F);
        EXPECT_EQ(N8 ? zeps::n8::zepsSubbandSynthesis_32sc16s_Sfs(V, y.data(), state.p, sf, buf.p)
                     : zeps::u8::zepsSubbandSynthesis_32sc16s_Sfs(V, y.data(), state.p, sf, buf.p),
                  zepStsNoErr);
        return y;
    }
};

}  // namespace zeps::test
