// The contract table, checked: every row's null pointers, out-of-range values,
// check order and "nothing written on error", on both processor builds; every
// export has a row; the checks catch the faults they are meant to catch.
#include <gtest/gtest.h>

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
            } else {
                EXPECT_NE(join(problems).find("null pSrcDst with len"), std::string::npos) << join(problems);
            }
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
