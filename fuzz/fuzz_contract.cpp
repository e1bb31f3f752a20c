// libFuzzer driver over the contract table: one target per row, chosen with
// ZEPS_FUZZ_TARGET=<export> (ZEPS_FUZZ_LIST=1 lists them). The input decides
// the scalar arguments (mostly valid, sometimes a check's boundary or any
// value of the type), which pointers are null (rarely), and the contents of
// every buffer; each buffer is exactly as long as the row says, so an overrun
// meets the sanitizer. Stateful rows run a fuzzed initialiser, then a
// sequence of up to eight calls on that one state.
//
// Every call runs on both processor builds and must: return a library status,
// the status the row predicts for a violated check (with all caller memory
// untouched unless documented), a status of the row's success set otherwise,
// and the same status and bytes on both builds.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "tests/contract/contract.h"

using namespace zeps::contract;

namespace {

/// Decisions from the end of the input, buffer contents from its start (so
/// speech seeds become sample data).
class InputSource final : public Source {
public:
    InputSource(const std::uint8_t* d, std::size_t n) : d_(d), back_(n) { raw_contents = true; }
    std::uint64_t next() override {
        std::uint64_t x = 0;
        for (int i = 0; i < 8 && back_ > front_; ++i) x = (x << 8) | d_[--back_];
        return x;
    }
    void fill(std::uint8_t* dst, std::size_t n) override {
        const std::size_t k = std::min(n, back_ - front_);
        if (k) std::memcpy(dst, d_ + front_, k);
        std::memset(dst + k, 0, n - k);
        front_ += k;
    }

private:
    const std::uint8_t* d_;
    std::size_t front_ = 0, back_;
};

const Row* g_row = nullptr;

[[noreturn]] void fail(const Call& c, const char* what, std::int64_t a, std::int64_t b) {
    std::fprintf(stderr, "\n*** contract violation in %s: %s (%lld vs %lld)\n    scalars:", c.row->name, what,
                 static_cast<long long>(a), static_cast<long long>(b));
    for (std::size_t i = 0; i < c.row->args.size(); ++i) {
        if (c.row->args[i].dir == Dir::Scalar) std::fprintf(stderr, " %s=%lld/%g", c.row->args[i].name, static_cast<long long>(c.v[i].i), c.v[i].f);
        else if (c.null[i]) std::fprintf(stderr, " %s=null", c.row->args[i].name);
    }
    std::fprintf(stderr, "\n");
    std::abort();
}

/// Runs one call on both builds and checks it; returns true when it passed
/// every check (so a state it updated stays usable).
bool checked_run(Call& a) {
    Call b = a.clone();
    b.build = 1;
    const auto exp = expected(a);
    const auto before = a.snapshot();
    const std::int64_t sa = a.run();
    const std::int64_t sb = b.run();
    mark_state_pointers(a, b);  // an initialiser: the state's inner pointers, from the two blocks
    if (!a.ex->returns_status) {
        if (sa == 0 || sb == 0) fail(a, "null result", sa, sb);
        return true;
    }
    if (!is_library_status(sa)) fail(a, "status outside the library's values", sa, 0);
    if (sa != sb) fail(a, "the builds return different statuses", sa, sb);
    if (a.snapshot() != b.snapshot()) fail(a, "the builds write different bytes", sa, sb);
    if (exp) {
        if (sa != exp->status) fail(a, "status differs from the row's check", sa, exp->status);
        if (!exp->check->writes && a.snapshot() != before) fail(a, "caller memory written on error", sa, 0);
        return false;
    }
    for (int ok : a.row->ok)
        if (sa == ok) return true;
    fail(a, "status outside the row's success set", sa, 0);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    if (std::getenv("ZEPS_FUZZ_LIST")) {
        for (const std::vector<Row>* list : {&library_rows(), &selftest_rows()})
            for (const Row& r : *list)
                if (std::string(r.name).find(".faulty.") == std::string::npos && validate(r).empty())
                    std::printf("%s\n", r.name);
        std::exit(0);
    }
    const char* t = std::getenv("ZEPS_FUZZ_TARGET");
    g_row = t ? find_row(t) : nullptr;
    if (!g_row || !validate(*g_row).empty()) {
        std::fprintf(stderr, "set ZEPS_FUZZ_TARGET to a row name (ZEPS_FUZZ_LIST=1 lists them)\n");
        std::exit(2);
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputSource src(data, size);
    const Row& row = *g_row;
    const int si = state_arg(row);
    if (si < 0) {
        Call c;
        if (materialize(fuzz_plan(row, src), 0, src, c)) checked_run(c);
        return 0;
    }
    // Stateful: a fuzzed initialiser call, then a sequence on its state.
    const Row& irow = *find_row(row.args[static_cast<std::size_t>(si)].init);
    const Plan ip = fuzz_plan(irow, src);
    Call ic;
    if (!materialize(ip, 0, src, ic) || !checked_run(ic)) return 0;
    Buffer state;
    for (std::size_t k = 0; k < irow.args.size(); ++k)
        if (irow.args[k].dir == Dir::StateOut) state = std::move(ic.buf[k]);
    const int steps = 1 + static_cast<int>(src.next() % 8);
    for (int s = 0; s < steps; ++s) {
        Call c;
        if (!materialize(fuzz_plan(row, src), 0, src, c, &ip, &state)) return 0;
        if (checked_run(c)) state = std::move(c.buf[static_cast<std::size_t>(si)]);
    }
    return 0;
}
