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
    for (const ZepLibraryVersion* v : {&u, &n}) {
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
    EXPECT_EQ(u.version, n.version);  // one text object shared by both records
    EXPECT_EQ(u.buildDate, n.buildDate);
}

}  // namespace
}  // namespace zeps
