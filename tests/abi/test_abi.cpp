// SPDX-License-Identifier: BSD-3-Clause
// The built libzepsc.so as a dynamic library: exported names, forwarding
// entries, and the build chosen at load for each processor feature mask.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <algorithm>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#ifndef ZEPS_EMULATOR
#define ZEPS_EMULATOR ""  // programs of this build run natively
#endif

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

// Normalises one disassembled instruction: tabs and runs of blanks become one
// blank, trailing blanks go.
std::string squeeze(const std::string& s) {
    std::string out;
    for (char c : s) {
        if (c == '\t') c = ' ';
        if (c == ' ' && (out.empty() || out.back() == ' ')) continue;
        out += c;
    }
    while (!out.empty() && out.back() == ' ') out.pop_back();
    return out;
}

bool starts_with(const std::string& s, const std::string& p) { return s.rfind(p, 0) == 0; }
bool ends_with(const std::string& s, const std::string& p) {
    return s.size() >= p.size() && s.compare(s.size() - p.size(), p.size(), p) == 0;
}

// Byte offset of a RIP-relative operand's symbol annotation "<sym+0x..>" from sym.
bool symbol_offset(const std::string& ins, const std::string& sym, std::size_t& offset) {
    const auto at = ins.find("<" + sym);
    if (at == std::string::npos) return false;
    const std::string rest = ins.substr(at + 1 + sym.size());
    if (rest == ">") {
        offset = 0;
        return true;
    }
    if (!starts_with(rest, "+0x") || !ends_with(rest, ">")) return false;
    offset = std::stoul(rest.substr(3, rest.size() - 4), nullptr, 16);
    return true;
}

// Every exported entry is: load of the variant index, address of its own
// pair in the dispatch table, one indirect jump through the selected slot.
// What follows the jump up to the next entry is alignment padding that is
// never executed.
TEST(Abi, EveryEntryIsLoadAndIndirectJump) {
#if !defined(__x86_64__)
    GTEST_SKIP() << "one generic build on this host: the entries are direct calls, there is no table";
#endif
    const auto dis = lines(run("objdump -d --no-show-raw-insn -M suffix " ZEPS_LIB_PATH));
    ASSERT_FALSE(dis.empty());
    std::map<std::string, std::vector<std::string>> body;
    std::string cur;
    for (const std::string& l : dis) {
        if (!l.empty() && l[0] != ' ' && ends_with(l, ">:")) {
            const auto lt = l.find('<');
            cur = l.substr(lt + 1, l.size() - lt - 3);
            continue;
        }
        const auto tab = l.find('\t');
        if (!cur.empty() && tab != std::string::npos) body[cur].push_back(squeeze(l.substr(tab + 1)));
        if (l.empty()) cur.clear();
    }
    const auto is_padding = [](const std::string& ins) {
        return starts_with(ins, "nop") || starts_with(ins, "xchg %ax,%ax") || starts_with(ins, "cs nop") ||
               starts_with(ins, "data16") || starts_with(ins, "int3");
    };
    std::size_t index = 0;
    for (const char* name : kExports) {
        SCOPED_TRACE(name);
        const auto it = body.find(name);
        ASSERT_NE(it, body.end()) << "no disassembly";
        const auto& ins = it->second;
        ASSERT_GE(ins.size(), 3u);
        std::size_t offset = 1;
        EXPECT_TRUE(starts_with(ins[0], "movslq 0x") && ins[0].find("(%rip),%rax # ") != std::string::npos &&
                    symbol_offset(ins[0], "zeps_variant", offset) && offset == 0)
            << ins[0];
        EXPECT_TRUE(starts_with(ins[1], "leaq 0x") && ins[1].find("(%rip),%r11 # ") != std::string::npos &&
                    symbol_offset(ins[1], "zeps_dispatch", offset))
            << ins[1];
        EXPECT_EQ(offset, 16 * index) << "entry indexes another export's pair";
        EXPECT_TRUE(ins[2] == "jmpq *(%r11,%rax,8)" || ins[2] == "jmp *(%r11,%rax,8)") << ins[2];
        for (std::size_t i = 3; i < ins.size(); ++i) EXPECT_TRUE(is_padding(ins[i])) << ins[i];
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
#if defined(__x86_64__)
        {"0", "u8|zepSC SSSE3 (u8)"},
        {"20", "u8|zepSC SSSE3 (u8)"},
        {"10", "u8|zepSC SSSE3 (u8)"},
        {"30", "n8|zepSC Lumo (n8)"},
#else
        // One generic build on other hosts, whatever the mask.
        {"0", "gen|zepSC generic (gen)"},
        {"30", "gen|zepSC generic (gen)"},
#endif
    };
    for (const Case& c : cases) {
        const std::string cmd = std::string("LD_LIBRARY_PATH=" ZEPS_FAKE_CORE_DIR " ZEPCORE_TEST_MASK=") + c.mask +
                                " " ZEPS_EMULATOR " " ZEPS_PROBE_PATH;
        const std::string out = run(cmd);
        EXPECT_EQ(out, std::string(c.expect) + "|8.1.1 (r42291)|Apr 10 2014|8.1.1.42291\n") << "mask 0x" << c.mask;
    }
}

}  // namespace
