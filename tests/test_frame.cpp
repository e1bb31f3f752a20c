// SPDX-License-Identifier: BSD-3-Clause
// Build selection and version records.
#include <gtest/gtest.h>

#include <cstring>

#include "frame/select_variant.h"
#include "frame/version.h"

namespace zeps {
namespace {

TEST(Frame, VariantSelectionNeedsBothSsse3AndMovbe) {
    EXPECT_EQ(select_variant(0x00), 0);
    EXPECT_EQ(select_variant(0x10), 0);  // SSSE3 alone
    EXPECT_EQ(select_variant(0x20), 0);  // MOVBE alone
    EXPECT_EQ(select_variant(0x30), 1);
    // Only the two bits count.
    EXPECT_EQ(select_variant(~0x20ull), 0);
    EXPECT_EQ(select_variant(0xffffffffffffffffull), 1);
}

TEST(Frame, VersionRecordsMatchTheTable) {
    const ZepLibraryVersion& u = kLibVersion[0];
    const ZepLibraryVersion& n = kLibVersion[1];
    const ZepLibraryVersion& g = kLibVersion[2];
    for (const ZepLibraryVersion* v : {&u, &n, &g}) {
        EXPECT_EQ(v->major, 8);
        EXPECT_EQ(v->minor, 1);
        EXPECT_EQ(v->majorBuild, 1);
        EXPECT_EQ(v->build, 42291);
        EXPECT_STREQ(v->version, "8.1.1 (r42291)");
        EXPECT_STREQ(v->buildDate, "Apr 10 2014");
    }
    EXPECT_EQ(std::memcmp(u.targetCpu, "u8\0\0", 4), 0);
    EXPECT_EQ(std::memcmp(n.targetCpu, "n8\0\0", 4), 0);
    EXPECT_STREQ(u.name, "zepSC SSSE3 (u8)");
    EXPECT_STREQ(n.name, "zepSC Lumo (n8)");
    EXPECT_EQ(std::memcmp(g.targetCpu, "gen\0", 4), 0);  // the one build of hosts other than x86-64
    EXPECT_STREQ(g.name, "zepSC generic (gen)");
    EXPECT_EQ(u.version, n.version);  // one text object shared by all records
    EXPECT_EQ(u.buildDate, n.buildDate);
    EXPECT_EQ(u.version, g.version);
}

}  // namespace
}  // namespace zeps
