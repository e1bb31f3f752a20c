// The built libzepsc.so as a dynamic library: exported names, forwarding
// entries, and the build chosen at load for each processor feature mask.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <algorithm>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace {

const char* const kExports[] = {
#define ZEPS_FN(ret, name, params) #name,
#include "zepsc_exports.inc"
#undef ZEPS_FN
};

std::string run(const std::string& cmd) {
    std::string out;
    FILE* p = popen(cmd.c_str(), "r");
    if (p == nullptr) return out;
    std::array<char, 4096> buf{};
    std::size_t n;
    while ((n = fread(buf.data(), 1, buf.size(), p)) > 0) out.append(buf.data(), n);
    pclose(p);
    return out;
}

std::vector<std::string> lines(const std::string& s) {
    std::vector<std::string> v;
    std::istringstream in(s);
    for (std::string l; std::getline(in, l);) v.push_back(l);
    return v;
}

TEST(Abi, ExportsOnlyLibraryNames) {
    const auto syms = lines(run("nm -D --defined-only " ZEPS_LIB_PATH));
    ASSERT_FALSE(syms.empty());
    std::map<std::string, bool> seen;
    for (const std::string& l : syms) {
        std::istringstream in(l);
        std::string addr, type, name;
        in >> addr >> type >> name;
        EXPECT_EQ(name.rfind("zeps", 0), 0u) << "unexpected export: " << l;
        seen[name] = true;
    }
    for (const char* name : kExports) EXPECT_TRUE(seen.count(name)) << name << " is not exported";
    EXPECT_EQ(seen.size(), std::size(kExports));
}

TEST(Abi, SonameHasMajorVersion8) {
    const std::string dyn = run("objdump -p " ZEPS_LIB_PATH);
    EXPECT_NE(dyn.find("SONAME               libzepsc.so.8"), std::string::npos);
}

// Every exported entry is: load of the variant index, address of its own
// pair in the dispatch table, one indirect jump through the selected slot.
// What follows the jump up to the next entry is alignment padding that is
// never executed.
TEST(Abi, EveryEntryIsLoadAndIndirectJump) {
    const auto dis = lines(run("objdump -d --no-show-raw-insn -M suffix " ZEPS_LIB_PATH));
    ASSERT_FALSE(dis.empty());
    std::map<std::string, std::vector<std::string>> body;
    const std::regex head("^[0-9a-f]+ <([A-Za-z0-9_]+)>:$");
    std::string cur;
    for (const std::string& l : dis) {
        std::smatch m;
        if (std::regex_match(l, m, head)) {
            cur = m[1];
            continue;
        }
        const auto tab = l.find('\t');
        if (!cur.empty() && tab != std::string::npos) body[cur].push_back(l.substr(tab + 1));
        if (l.empty()) cur.clear();
    }
    const std::regex load(R"(^movslq 0x[0-9a-f]+\(%rip\),%rax\s+# [0-9a-f]+ <zeps_variant>$)");
    const std::regex pair(R"(^leaq 0x[0-9a-f]+\(%rip\),%r11\s+# [0-9a-f]+ <zeps_dispatch(\+0x([0-9a-f]+))?>$)");
    const std::regex jump(R"(^jmpq? \s*\*\(%r11,%rax,8\)$)");
    const std::regex pad(R"(^(nop[wl]?|xchg %ax,%ax|cs nopw|data16|int3).*)");
    std::size_t index = 0;
    for (const char* name : kExports) {
        SCOPED_TRACE(name);
        const auto it = body.find(name);
        ASSERT_NE(it, body.end()) << "no disassembly";
        const auto& ins = it->second;
        ASSERT_GE(ins.size(), 3u);
        auto trim = [](std::string s) {
            while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.pop_back();
            std::replace(s.begin(), s.end(), '\t', ' ');
            return std::regex_replace(s, std::regex(" +"), " ");
        };
        EXPECT_TRUE(std::regex_match(trim(ins[0]), load)) << ins[0];
        std::smatch m;
        const std::string lea = trim(ins[1]);
        EXPECT_TRUE(std::regex_match(lea, m, pair)) << ins[1];
        const std::size_t offset = m[2].matched ? std::stoul(m[2].str(), nullptr, 16) : 0;
        EXPECT_EQ(offset, 16 * index) << "entry indexes another export's pair";
        EXPECT_TRUE(std::regex_match(trim(ins[2]), jump)) << ins[2];
        for (std::size_t i = 3; i < ins.size(); ++i) EXPECT_TRUE(std::regex_match(trim(ins[i]), pad)) << ins[i];
        ++index;
    }
}

// The core library decides the build: a test double with the same soname,
// found first through LD_LIBRARY_PATH, reports each mask in turn.
TEST(Abi, LoadTimeChoiceFollowsTheCoreMask) {
    struct Case {
        const char* mask;
        const char* expect;
    } const cases[] = {
        {"0", "u8|zepSC SSSE3 (u8)"},
        {"20", "u8|zepSC SSSE3 (u8)"},
        {"10", "u8|zepSC SSSE3 (u8)"},
        {"30", "n8|zepSC Lumo (n8)"},
    };
    for (const Case& c : cases) {
        const std::string cmd = std::string("LD_LIBRARY_PATH=" ZEPS_FAKE_CORE_DIR " ZEPCORE_TEST_MASK=") + c.mask +
                                " " ZEPS_PROBE_PATH;
        const std::string out = run(cmd);
        EXPECT_EQ(out, std::string(c.expect) + "|8.1.1 (r42291)|Apr 10 2014|8.1.1.42291\n") << "mask 0x" << c.mask;
    }
}

}  // namespace
