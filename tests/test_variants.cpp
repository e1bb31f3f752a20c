// SPDX-License-Identifier: BSD-3-Clause
// Both processor builds of every export give the same bytes and statuses.
#include <set>
#include <string>

#include "tests/variant_check.h"
#include "tests/vec_reader.h"

namespace zeps::test {

std::vector<VariantCheck>& variant_checks() {
    static std::vector<VariantCheck> checks;
    return checks;
}

namespace {

const char* const kExports[] = {
#define ZEPS_FN(ret, name, params) #name,
#include "zepsc_exports.inc"
#undef ZEPS_FN
};

constexpr int kRounds = 300;

TEST(Variants, EveryExportHasACheck) {
    std::set<std::string> have;
    for (const VariantCheck& c : variant_checks()) have.insert(c.name);
    for (const char* name : kExports) EXPECT_TRUE(have.count(name)) << name << " has no ZEPS_VARIANT_CHECK";
}

TEST(Variants, BuildsAgreeOnEveryExport) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("speech");
    for (const VariantCheck& c : variant_checks()) {
        SCOPED_TRACE(c.name);
        for (int round = 0; round < kRounds; ++round) {
            Rng rng(0x5eedull * 1000003u + static_cast<std::uint64_t>(round));
            c.fn(rng);
            if (::testing::Test::HasFatalFailure()) return;
        }
    }
}

}  // namespace
}  // namespace zeps::test

ZEPS_VARIANT_CHECK(zepscGetLibVersion) {
    const ZepLibraryVersion* a = zeps::u8::zepscGetLibVersion();
    const ZepLibraryVersion* b = zeps::n8::zepscGetLibVersion();
    // The one export whose builds differ by design: each returns its own
    // record, and the records share their version and date texts. (Hosts
    // other than x86-64 have one generic build.)
#if defined(__x86_64__)
    ASSERT_NE(a, b);
    EXPECT_STREQ(a->targetCpu, "u8");
    EXPECT_STREQ(b->targetCpu, "n8");
#else
    EXPECT_STREQ(a->targetCpu, "gen");
#endif
    EXPECT_EQ(a->version, b->version);
    EXPECT_EQ(a->buildDate, b->buildDate);
}
