// The contract table, checked: every row's null pointers, out-of-range values,
// check order and "nothing written on error", on both processor builds; every
// export has a row; the checks catch the faults they are meant to catch.
#include <gtest/gtest.h>

#include <cstring>
#include <iostream>
#include <string>

#include "tests/contract/contract.h"
#include "tests/contract/enabled_families.h"

namespace zeps::contract {
namespace {

std::string join(const std::vector<std::string>& v) {
    std::string s;
    for (const std::string& x : v) s += "\n  " + x;
    return s;
}

TEST(Contract, EveryRowKeepsItsContract) {
    for (const Row& row : library_rows())
        for (int build : {0, 1})
            for (std::uint64_t seed : {1u, 2u, 3u}) {
                const auto problems = check_row(row, build, seed);
                EXPECT_TRUE(problems.empty()) << join(problems);
            }
}

TEST(Contract, EveryExportHasARow) {
    std::vector<std::string> missing;
    for (const Export& e : library_exports()) {
        bool found = false;
        for (const Row& r : library_rows()) found = found || e.name == r.name;
        if (!found) missing.push_back(e.name);
    }
#if ZEPS_CONTRACT_REQUIRE_EVERY_EXPORT
    EXPECT_TRUE(missing.empty()) << "exports without a contract row:" << join(missing);
#else
    if (!missing.empty()) std::cout << "[contract] exports without a contract row:" << join(missing) << "\n";
#endif
    for (const Row& r : library_rows()) EXPECT_NE(find_export(r.name), nullptr) << r.name << " is not an export";
}

TEST(Contract, ChecksCatchBrokenModels) {
    for (const Row& row : selftest_rows())
        for (int build : {0, 1}) {
            const auto problems = check_row(row, build, 7);
            const std::string name = row.name;
            if (name.find(".faulty.") == std::string::npos) {
                EXPECT_TRUE(problems.empty()) << join(problems);
            } else if (name.find("Leaky") != std::string::npos) {
                EXPECT_NE(join(problems).find("caller memory written on error"), std::string::npos) << join(problems);
            } else if (name.find("OffByOne") != std::string::npos) {
                EXPECT_NE(join(problems).find("len = 64 (valid edge)"), std::string::npos) << join(problems);
            } else {
                EXPECT_NE(join(problems).find("null pSrcDst with len"), std::string::npos) << join(problems);
            }
        }
}

// A fuzzer learns heap addresses from the harness's own comparisons and can
// plant one in sample data that reaches a state's delay line. A copy or a
// snapshot must tell such a word from the state's inner pointers: once a
// data word equal to an address inside the clone made the builds "write
// different bytes" on a call that wrote nothing (all pointers null).
TEST(Contract, StateDataThatLooksLikeAnAddressIsData) {
    for (const char* name : {"zepsSubbandSynthesis_32sc16s_Sfs", "zepsSubbandAnalysis_32f32fc"}) {
        const Row& row = *find_row(name);
        const auto si = static_cast<std::size_t>(state_arg(row));
        SeededSource src(5);
        Call a;
        ASSERT_TRUE(materialize(valid_plan(row, src), 0, src, a));
        ASSERT_FALSE(a.buf[si].inner.empty()) << name << ": no inner pointer found";
        const std::size_t data_off = a.buf[si].bytes - 16;  // last words: delay line or transform tables
        for (std::size_t off : a.buf[si].inner) ASSERT_NE(off, data_off);
        auto plant = [&](Call& c, std::uintptr_t w) { std::memcpy(c.ptr<std::uint8_t>(static_cast<int>(si)) + data_off, &w, sizeof w); };
        // An address inside the original: a copy keeps the word as it is.
        plant(a, reinterpret_cast<std::uintptr_t>(a.ptr<std::uint8_t>(static_cast<int>(si))) + 8);
        Call b = a.clone();
        b.build = 1;
        EXPECT_EQ(0, std::memcmp(a.ptr<std::uint8_t>(static_cast<int>(si)) + data_off, b.ptr<std::uint8_t>(static_cast<int>(si)) + data_off, 8)) << name;
        // An address inside the copy, in both: equal snapshots, before and
        // after a call with every pointer null.
        const std::uintptr_t in_b = reinterpret_cast<std::uintptr_t>(b.ptr<std::uint8_t>(static_cast<int>(si))) + 8;
        plant(a, in_b);
        plant(b, in_b);
        EXPECT_EQ(a.snapshot(), b.snapshot()) << name;
        a.null.assign(a.null.size(), true);
        b.null.assign(b.null.size(), true);
        EXPECT_EQ(a.run(), zepStsNullPtrErr);
        EXPECT_EQ(b.run(), zepStsNullPtrErr);
        EXPECT_EQ(a.snapshot(), b.snapshot()) << name;
    }
}

TEST(Contract, RowsMustMatchTheDeclarations) {
    const Row wrong{"selftest.Scale", {io(T::s32, "pSrcDst", arg(1)), sc("len", 1, 64)}};
    EXPECT_FALSE(validate(wrong).empty());
    const Row kinds{"selftest.Scale", {sc("pSrcDst", 0, 1), sc("len", 1, 64), sc("scaleFactor", 0, 15)}};
    EXPECT_FALSE(validate(kinds).empty());
    const Row sizes{"selftest.Scale", {io(T::s32, "pSrcDst", arg(1)), sc("len", 1, 64), sc("scaleFactor", 0, 15)}};
    EXPECT_FALSE(validate(sizes).empty());
    EXPECT_FALSE(validate(Row{"zepsNoSuchExport", {}}).empty());
}

}  // namespace
}  // namespace zeps::contract
