// SPDX-License-Identifier: BSD-3-Clause
// Contract machinery: the export registry built from the export list, call
// materialisation from a row, the status oracle and the generic checks.
#include "tests/contract/contract.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <mutex>
#include <iomanip>
#include <sstream>
#include <type_traits>

#include "frame/variants.h"

namespace zeps::contract {
namespace {

std::vector<Export>& extra_exports() {
    static std::vector<Export> v;
    return v;
}

// ------------------------------------------------------------ helpers
constexpr std::int64_t kMaxElems = 1 << 16;  // cap of a buffer built from an out-of-range length
constexpr std::uint8_t kCanary = 0xA5;

bool is_ptr(const Arg& a) { return a.dir != Dir::Scalar; }

const Param& param(const Call& c, int i) { return c.ex->params[static_cast<std::size_t>(i)]; }

void type_range(const Param& p, double& lo, double& hi) {
    if (p.kind == PKind::Float) {
        lo = -static_cast<double>(std::numeric_limits<float>::max());
        hi = -lo;
        return;
    }
    const int bits = static_cast<int>(p.size) * 8;
    if (p.is_signed) {
        lo = -std::ldexp(1.0, bits - 1);
        hi = std::ldexp(1.0, bits - 1) - 1;
    } else {
        lo = 0;
        hi = std::ldexp(1.0, bits) - 1;
    }
}

double scalar_of(const Call& c, int i) {
    const Val& v = c.v[static_cast<std::size_t>(i)];
    return param(c, i).kind == PKind::Float ? v.f : static_cast<double>(v.i);
}

void set_scalar(Val& v, const Param& p, double x) {
    if (p.kind == PKind::Float) v.f = x;
    else v.i = static_cast<std::int64_t>(x);
}

bool rejects(const Check& c, double x) {
    if (!c.not_in) return x >= c.lo && x <= c.hi;
    const bool ok = (c.lo <= c.hi && x >= c.lo && x <= c.hi) || std::find(c.set.begin(), c.set.end(), x) != c.set.end();
    return !ok;
}

/// The row's checks in order, with the default null checks prepended when
/// the row does not place them itself.
std::vector<const Check*> effective_checks(const Row& row) {
    static const std::vector<Check> kNull = [] {
        std::vector<Check> v;
        for (int i = 0; i < 32; ++i) v.push_back(nonnull(i));
        return v;
    }();
    std::vector<const Check*> out;
    const bool explicit_nulls =
        std::any_of(row.checks.begin(), row.checks.end(), [](const Check& c) { return c.kind == CK::NonNull; });
    if (!explicit_nulls)
        for (std::size_t i = 0; i < row.args.size(); ++i)
            if (is_ptr(row.args[i]) && !row.args[i].optional && !row.args[i].unchecked) out.push_back(&kNull[i]);
    for (const Check& c : row.checks) out.push_back(&c);
    return out;
}

std::int64_t eval(const Len& l, const Call& c) {
    if (l.fn) return l.fn(c);
    if (l.arg >= 0) return c.s(l.arg) * l.mul + l.add;
    return l.n;
}

unsigned components(T t) { return t == T::sc32 || t == T::fc32 ? 2u : 1u; }
bool is_float(T t) { return t == T::f32 || t == T::fc32; }

/// Fills one buffer: values in the declared range, moderate floats, or raw bytes.
void fill(Buffer& b, const Arg& a, Source& src, bool raw) {
    if (a.dir == Dir::Out || a.dir == Dir::StateOut) {
        std::memset(b.data.get(), kCanary, b.bytes);
        return;
    }
    if (a.precondition) raw = false;
    if (raw || a.raw_only || (a.lo > a.hi && !is_float(a.type))) {
        src.fill(b.data.get(), b.bytes);
        return;
    }
    const unsigned es = elem_size(a.type) / components(a.type);
    for (std::size_t off = 0; off + es <= b.bytes; off += es) {
        std::uint8_t* p = b.data.get() + off;
        if (is_float(a.type)) {
            const double u = static_cast<double>(src.next() >> 11) * 0x1.0p-53;
            const float x = static_cast<float>(a.lo <= a.hi ? a.lo + u * (a.hi - a.lo) : (u * 2 - 1) * 1000.0);
            std::memcpy(p, &x, 4);
        } else {
            const std::int64_t x = src.uniform(static_cast<std::int64_t>(a.lo), static_cast<std::int64_t>(a.hi));
            if (es == 1) { const auto y = static_cast<std::uint8_t>(x); std::memcpy(p, &y, 1); }
            else if (es == 2) { const auto y = static_cast<std::int16_t>(x); std::memcpy(p, &y, 2); }
            else { const auto y = static_cast<std::int32_t>(x); std::memcpy(p, &y, 4); }
        }
    }
}

Buffer make_buffer(std::int64_t elems, unsigned esize) {
    elems = std::clamp<std::int64_t>(elems, 0, kMaxElems);
    Buffer b;
    b.bytes = static_cast<std::size_t>(elems) * esize;
    b.data.reset(alloc_block(b.bytes));
    return b;
}

double valid_value(const Arg& a, const Param& p, Source& src) {
    if (!a.pick.empty()) return a.pick[static_cast<std::size_t>(src.uniform(0, static_cast<std::int64_t>(a.pick.size()) - 1))];
    double lo = a.lo, hi = a.hi;
    if (lo > hi) type_range(p, lo, hi);
    if (p.kind == PKind::Float) return lo + static_cast<double>(src.next() >> 11) * 0x1.0p-53 * (hi - lo);
    if (hi - lo > 65535) {  // a length or count: keep valid calls small
        if (lo <= 0 && hi >= 0) { lo = std::max(lo, -512.0); hi = std::min(hi, 512.0); }
        else hi = lo + 1023;
    }
    return static_cast<double>(src.uniform(static_cast<std::int64_t>(lo), static_cast<std::int64_t>(hi)));
}

std::string fmt(double x) {
    std::ostringstream o;
    o << std::setprecision(12) << x;
    return o.str();
}

}  // namespace

// ------------------------------------------------------------ registry
const std::vector<Export>& library_exports() {
    static const std::vector<Export> v = {
#define ZEPS_FN(ret, name, params) make_export(#name, &zeps::u8::name, &zeps::n8::name),
#include "zepsc_exports.inc"
#undef ZEPS_FN
    };
    return v;
}

void add_export(Export e) { extra_exports().push_back(std::move(e)); }

const Export* find_export(const std::string& name) {
    for (const std::vector<Export>* list : std::initializer_list<const std::vector<Export>*>{&library_exports(), &extra_exports()})
        for (const Export& e : *list)
            if (e.name == name) return &e;
    return nullptr;
}

const Row* find_row(const std::string& name) {
    for (const std::vector<Row>* list : {&library_rows(), &selftest_rows()})
        for (const Row& r : *list)
            if (name == r.name) return &r;
    return nullptr;
}

unsigned elem_size(T t) {
    switch (t) {
        case T::u8: case T::byte: return 1;
        case T::s16: return 2;
        case T::s32: case T::f32: return 4;
        case T::sc32: case T::fc32: return 8;
    }
    return 1;
}

bool is_library_status(std::int64_t st) {
    static const std::int64_t kAll[] = {0, 12, 13, 14, 15, -2, -5, -6, -7, -8, -11, -12, -13, -119};
    return std::find(std::begin(kAll), std::end(kAll), st) != std::end(kAll);
}

// ------------------------------------------------------------ sources
std::int64_t Source::uniform(std::int64_t lo, std::int64_t hi) {
    if (hi <= lo) return lo;
    const auto span = static_cast<std::uint64_t>(hi) - static_cast<std::uint64_t>(lo) + 1;
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(lo) + (span == 0 ? next() : next() % span));
}

void Source::fill(std::uint8_t* dst, std::size_t n) {
    for (std::size_t i = 0; i < n; i += 8) {
        const std::uint64_t x = next();
        std::memcpy(dst + i, &x, std::min<std::size_t>(8, n - i));
    }
}

std::uint64_t SeededSource::next() {
    std::uint64_t z = (s_ += 0x9e3779b97f4a7c15ull);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
    return z ^ (z >> 31);
}

// ------------------------------------------------------------ calls
std::size_t Call::count(int i) const {
    const Arg& a = row->args[static_cast<std::size_t>(i)];
    return buf[static_cast<std::size_t>(i)].bytes / elem_size(a.type);
}

Call Call::clone() const {
    Call c;
    c.row = row;
    c.ex = ex;
    c.build = build;
    c.v = v;
    c.null = null;
    c.init = init;
    for (const Buffer& b : buf) c.buf.push_back(copy_buffer(b));
    return c;
}

namespace {
std::uintptr_t word_at(const Buffer& b, std::size_t off) {
    std::uintptr_t w;
    std::memcpy(&w, b.data.get() + off, sizeof w);
    return w;
}
std::uintptr_t base_of(const Buffer& b) { return reinterpret_cast<std::uintptr_t>(b.data.get()); }
}  // namespace

Buffer copy_buffer(const Buffer& b) {
    Buffer d;
    d.bytes = b.bytes;
    d.inner = b.inner;
    if (!b.data) return d;
    d.data.reset(alloc_block(b.bytes));
    std::memcpy(d.data.get(), b.data.get(), std::max<std::size_t>(b.bytes, 1));
    for (std::size_t off : b.inner) {
        const std::uintptr_t w = word_at(b, off) - base_of(b) + base_of(d);
        std::memcpy(d.data.get() + off, &w, sizeof w);
    }
    return d;
}

void mark_inner_pointers(Buffer& a, Buffer& b) {
    a.inner.clear();
    if (!a.data || !b.data || a.bytes != b.bytes || a.data == b.data) return;
    for (std::size_t off = 0; off + sizeof(std::uintptr_t) <= a.bytes; off += sizeof(std::uintptr_t)) {
        const std::uintptr_t wa = word_at(a, off), wb = word_at(b, off);
        if (wa != wb && wa - base_of(a) == wb - base_of(b) && wa - base_of(a) <= a.bytes) a.inner.push_back(off);
    }
    b.inner = a.inner;
}

void mark_state_pointers(Call& a, Call& b) {
    for (std::size_t k = 0; k < a.row->args.size(); ++k)
        if (a.row->args[k].dir == Dir::StateOut && a.row->args[k].self_ref) mark_inner_pointers(a.buf[k], b.buf[k]);
}

void Call::bind() {
    for (std::size_t i = 0; i < row->args.size(); ++i)
        if (is_ptr(row->args[i]))
            v[i].p = null[i] ? nullptr : buf[i].data.get() + row->args[i].offset * elem_size(row->args[i].type);
}

std::int64_t Call::run() {
    bind();
    return ex->invoke(ex->build[build], v.data());
}

std::vector<std::uint8_t> Call::snapshot() const {
    std::vector<std::uint8_t> s;
    for (std::size_t i = 0; i < buf.size(); ++i) {
        const Buffer& b = buf[i];
        if (!b.data) continue;
        const std::size_t at = s.size();
        s.insert(s.end(), b.data.get(), b.data.get() + b.bytes);
        for (std::size_t off : b.inner) {  // inner pointers as offsets: equal for equal states
            const std::uintptr_t rel = word_at(b, off) - base_of(b);
            std::memcpy(&s[at + off], &rel, sizeof rel);
        }
    }
    return s;
}

int state_arg(const Row& row) {
    for (std::size_t i = 0; i < row.args.size(); ++i)
        if (row.args[i].dir == Dir::State) return static_cast<int>(i);
    return -1;
}

std::vector<std::string> validate(const Row& row) {
    std::vector<std::string> p;
    const Export* ex = find_export(row.name);
    if (!ex) return {std::string(row.name) + ": no such export"};
    if (ex->params.size() != row.args.size()) {
        p.push_back(std::string(row.name) + ": row has " + std::to_string(row.args.size()) + " arguments, export " +
                    std::to_string(ex->params.size()));
        return p;
    }
    for (std::size_t i = 0; i < row.args.size(); ++i) {
        const Arg& a = row.args[i];
        const Param& q = ex->params[i];
        const std::string where = std::string(row.name) + " argument " + a.name;
        if (is_ptr(a) != (q.kind == PKind::Ptr)) p.push_back(where + ": pointer/scalar mismatch");
        else if (is_ptr(a) && a.type != T::byte && q.size != elem_size(a.type) && !(a.type == T::sc32 || a.type == T::fc32))
            p.push_back(where + ": element size " + std::to_string(elem_size(a.type)) + ", declared " + std::to_string(q.size));
        if (a.dir == Dir::State) {
            const Row* init = find_row(a.init ? a.init : "");
            if (!init || state_arg(*init) != -1 ||
                std::none_of(init->args.begin(), init->args.end(), [](const Arg& x) { return x.dir == Dir::StateOut; }))
                p.push_back(where + ": initialiser row missing or without state_out");
            else if (std::none_of(init->args.begin(), init->args.end(),
                                  [&](const Arg& x) { return x.dir == Dir::StateOut && x.self_ref == a.self_ref; }))
                p.push_back(where + ": self-referencing here and in the initialiser's state_out differ");
        }
    }
    for (const Check& c : row.checks) {
        if (c.kind == CK::Rule) {
            if (!c.violated) p.push_back(std::string(row.name) + ": rule without condition");
            continue;
        }
        if (c.arg < 0 || static_cast<std::size_t>(c.arg) >= row.args.size())
            p.push_back(std::string(row.name) + ": check on a missing argument");
        else if (is_ptr(row.args[static_cast<std::size_t>(c.arg)]) != (c.kind == CK::NonNull))
            p.push_back(std::string(row.name) + ": check kind does not fit argument " + row.args[static_cast<std::size_t>(c.arg)].name);
    }
    return p;
}

Plan valid_plan(const Row& row, Source& src) {
    Plan p;
    p.row = &row;
    p.v.resize(row.args.size());
    p.null.assign(row.args.size(), false);
    const Export* ex = find_export(row.name);
    for (std::size_t i = 0; i < row.args.size(); ++i)
        if (!is_ptr(row.args[i])) set_scalar(p.v[i], ex->params[i], valid_value(row.args[i], ex->params[i], src));
    return p;
}

Plan fuzz_plan(const Row& row, Source& src) {
    Plan p = valid_plan(row, src);
    const Export* ex = find_export(row.name);
    for (std::size_t i = 0; i < row.args.size(); ++i) {
        const Param& q = ex->params[i];
        if (is_ptr(row.args[i])) {
            p.null[i] = !row.args[i].unchecked && src.chance(64);
            continue;
        }
        const std::uint64_t pick = src.next() % 16;
        if (pick == 0) {  // anything the type holds
            double lo, hi;
            type_range(q, lo, hi);
            set_scalar(p.v[i], q, q.kind == PKind::Float ? lo + static_cast<double>(src.next() >> 11) * 0x1.0p-53 * (hi - lo)
                                                           : static_cast<double>(src.uniform(static_cast<std::int64_t>(lo),
                                                                                             static_cast<std::int64_t>(hi))));
        } else if (pick <= 2) {  // a boundary of one of its checks
            std::vector<double> cand;
            for (const Check& c : row.checks)
                if (c.kind == CK::Reject && c.arg == static_cast<int>(i)) {
                    double lo, hi;
                    type_range(q, lo, hi);
                    for (double x : {c.lo - 1, c.lo, c.hi, c.hi + 1})
                        if (x >= lo && x <= hi) cand.push_back(x);
                    for (double x : c.set) cand.insert(cand.end(), {x - 1, x + 1});
                }
            if (!cand.empty()) set_scalar(p.v[i], q, cand[static_cast<std::size_t>(src.uniform(0, static_cast<std::int64_t>(cand.size()) - 1))]);
        }
    }
    return p;
}

bool materialize(const Plan& plan, int build, Source& src, Call& call, const Plan* init, const Buffer* state) {
    const Row& row = *plan.row;
    call = Call{};
    call.row = &row;
    call.ex = find_export(row.name);
    call.build = build;
    call.v = plan.v;
    call.null = plan.null;
    call.buf.resize(row.args.size());
    const int si = state_arg(row);
    if (si >= 0) {
        const Row& irow = *find_row(row.args[static_cast<std::size_t>(si)].init);
        call.init = std::make_shared<const Plan>(init ? *init : valid_plan(irow, src));
        Buffer& sb = call.buf[static_cast<std::size_t>(si)];
        if (state) {
            sb = copy_buffer(*state);
        } else {
            Call ic;
            if (!materialize(*call.init, build, src, ic)) return false;
            Call twin = ic.clone();  // a second block, to tell its inner pointers from data
            const std::int64_t st = ic.run();
            if (expected(ic) || std::find(irow.ok.begin(), irow.ok.end(), st) == irow.ok.end()) return false;
            twin.run();
            mark_state_pointers(ic, twin);
            for (std::size_t k = 0; k < irow.args.size(); ++k)
                if (irow.args[k].dir == Dir::StateOut) sb = std::move(ic.buf[k]);
        }
    }
    // Lengths may read the scalars, the initialiser's plan and earlier buffers.
    bool capped = false;
    for (std::size_t i = 0; i < row.args.size(); ++i) {
        const Arg& a = row.args[i];
        if (!is_ptr(a) || a.dir == Dir::State) continue;
        const std::int64_t len = eval(a.len, call);
        capped = capped || len > kMaxElems;
        call.buf[i] = make_buffer(len, elem_size(a.type));
    }
    const bool raw = src.raw_contents && src.chance(4);
    for (std::size_t i = 0; i < row.args.size(); ++i) {
        const Arg& a = row.args[i];
        if (!is_ptr(a) || a.dir == Dir::State) continue;
        const bool raw_here = raw && !a.precondition && src.chance(2);
        fill(call.buf[i], a, src, raw_here);
        if (a.shape && !raw_here && a.dir != Dir::Out && a.dir != Dir::StateOut) a.shape(call, static_cast<int>(i));
    }
    call.bind();
    // A call that passes its checks with a buffer above the cap cannot be
    // made; one that fails a check never touches its buffers. A rule may
    // look at contents, and decided on a capped buffer it says nothing of
    // the elements beyond the cap, which the export may read before it
    // rejects the call: only pointer and scalar range failures stand.
    if (!capped) return true;
    const auto e = expected(call);
    return e && e->check->kind != CK::Rule;
}

std::int64_t call_export(const Call& c, const char* name, std::initializer_list<Val> args) {
    const Export* e = find_export(name);
    if (!e || e->params.size() != args.size()) return -1000;
    return e->invoke(e->build[c.build], std::data(args));
}

std::optional<Expect> expected(const Call& call) {
    for (const Check* c : effective_checks(*call.row)) {
        switch (c->kind) {
            case CK::NonNull:
                if (call.null[static_cast<std::size_t>(c->arg)]) return Expect{c->status, c};
                break;
            case CK::Reject:
                if (rejects(*c, scalar_of(call, c->arg))) return Expect{c->status, c};
                break;
            case CK::Rule:
                if (c->violated(call)) return Expect{c->status, c};
                break;
        }
    }
    return std::nullopt;
}

std::vector<double> bad_values(const Call& call, const Check& c) {
    double tlo, thi;
    type_range(param(call, c.arg), tlo, thi);
    std::vector<double> cand;
    if (!c.not_in) {
        const double lo = std::max(c.lo, tlo), hi = std::min(c.hi, thi);
        if (lo <= hi) cand = {lo, hi, std::floor((lo + hi) / 2)};
    } else {
        cand = {tlo, thi, 0, -1, 1};
        if (c.lo <= c.hi) cand.insert(cand.end(), {c.lo - 1, c.hi + 1});
        for (double x : c.set) cand.insert(cand.end(), {x - 1, x + 1});
    }
    std::vector<double> out;
    for (double x : cand)
        if (x >= tlo && x <= thi && rejects(c, x) && std::find(out.begin(), out.end(), x) == out.end()) out.push_back(x);
    if (out.size() > 8) out.resize(8);
    return out;
}

// ------------------------------------------------------------ generic check
namespace {

/// One way to violate one check.
struct Violation {
    const Check* check;
    Overrides scalars;
    int null_arg = -1;
    int spoil = -1;
    std::string label;
};

std::vector<Violation> violations_of(const Check* c, const Call& base) {
    std::vector<Violation> out;
    const Row& row = *base.row;
    switch (c->kind) {
        case CK::NonNull:
            out.push_back({c, {}, c->arg, -1, std::string("null ") + row.args[static_cast<std::size_t>(c->arg)].name});
            break;
        case CK::Reject:
            for (double x : bad_values(base, *c))
                out.push_back({c, {{c->arg, x}}, -1, -1, std::string(row.args[static_cast<std::size_t>(c->arg)].name) + " = " + fmt(x)});
            break;
        case CK::Rule:
            for (const Overrides& o : c->examples) {
                std::string l = std::string(c->what) + " (";
                for (auto [i, x] : o) l += std::string(row.args[static_cast<std::size_t>(i)].name) + "=" + fmt(x) + " ";
                out.push_back({c, o, -1, -1, l + ")"});
            }
            if (c->spoil)
                for (int k = 0; k < 8; ++k) {
                    Call probe = base.clone();
                    if (!c->spoil(probe, k)) break;
                    out.push_back({c, {}, -1, k, std::string(c->what) + " (contents #" + std::to_string(k) + ")"});
                }
            break;
    }
    return out;
}

}  // namespace

std::vector<std::string> check_row(const Row& row, int build, std::uint64_t seed) {
    std::vector<std::string> problems = validate(row);
    if (!problems.empty()) return problems;
    const std::string tag = std::string(row.name) + (build ? " [n8]" : " [u8]") + ": ";
    SeededSource plan_src(seed);
    const Plan base_plan = valid_plan(row, plan_src);
    const int si = state_arg(row);
    std::optional<Plan> init_plan;
    if (si >= 0) init_plan = valid_plan(*find_row(row.args[static_cast<std::size_t>(si)].init), plan_src);

    // Builds the call of `plan` with the violations applied; contents are
    // the same for every variant of the row.
    auto make = [&](const std::vector<const Violation*>& vs, Call& c) {
        Plan p = base_plan;
        for (const Violation* v : vs) {
            for (auto [i, x] : v->scalars) set_scalar(p.v[static_cast<std::size_t>(i)], find_export(row.name)->params[static_cast<std::size_t>(i)], x);
            if (v->null_arg >= 0) p.null[static_cast<std::size_t>(v->null_arg)] = true;
        }
        SeededSource content(seed ^ 0xc0ffee);
        if (!materialize(p, build, content, c, init_plan ? &*init_plan : nullptr)) return false;
        for (const Violation* v : vs)
            if (v->spoil >= 0) v->check->spoil(c, v->spoil);
        return true;
    };

    Call base;
    if (!make({}, base)) return {tag + "the initialiser failed on a valid plan"};
    if (auto e = expected(base)) return {tag + "the row's valid plan fails its own check (status " + std::to_string(e->status) + ")"};
    {
        Call c = base.clone();
        const std::int64_t st = c.run();
        if (!c.ex->returns_status) {
            if (st == 0) problems.push_back(tag + "returned a null pointer");
            return problems;
        }
        if (std::find(row.ok.begin(), row.ok.end(), st) == row.ok.end())
            problems.push_back(tag + "valid call returned " + std::to_string(st));
    }

    const std::vector<const Check*> checks = effective_checks(row);
    auto expect_call = [&](const std::vector<const Violation*>& vs, const Check* want, const std::string& label) {
        Call c;
        if (!make(vs, c)) { problems.push_back(tag + label + ": initialiser failed"); return; }
        const auto e = expected(c);
        if (!e || e->check != want) {
            problems.push_back(tag + label + ": row inconsistent, the example does not fail this check first");
            return;
        }
        const auto before = c.snapshot();
        const std::int64_t st = c.run();
        if (st != want->status)
            problems.push_back(tag + label + ": status " + std::to_string(st) + ", expected " + std::to_string(want->status));
        if (!want->writes && c.snapshot() != before) problems.push_back(tag + label + ": caller memory written on error");
    };
    for (std::size_t k = 0; k < checks.size(); ++k) {
        const std::vector<Violation> vk = violations_of(checks[k], base);
        if (vk.empty()) problems.push_back(tag + "no way to violate check #" + std::to_string(k));
        for (const Violation& v : vk) expect_call({&v}, checks[k], v.label);
        // Order: this check wins over every later one violated together with it.
        if (vk.empty()) continue;
        for (std::size_t j = k + 1; j < checks.size(); ++j) {
            const std::vector<Violation> vj = violations_of(checks[j], base);
            if (vj.empty()) continue;
            if (vk[0].null_arg >= 0 && vj[0].null_arg >= 0) continue;  // two nulls: -8 either way
            if (vk[0].check->status == vj[0].check->status && vk[0].null_arg < 0 && vj[0].null_arg < 0) continue;
            bool same_arg = false;  // two values of one scalar cannot be set at once
            for (auto [a, x] : vk[0].scalars)
                for (auto [b, y] : vj[0].scalars) same_arg = same_arg || a == b;
            if (same_arg) continue;
            expect_call({&vk[0], &vj[0]}, checks[k], vk[0].label + " with " + vj[0].label);
        }
    }
    // Edges: the valid values right beside each rejected range (and each
    // value of a valid set) get the status the row predicts, so an
    // off-by-one in a range check shows.
    for (const Check* c : checks) {
        if (c->kind != CK::Reject) continue;
        const Param& q = find_export(row.name)->params[static_cast<std::size_t>(c->arg)];
        double tlo, thi;
        type_range(q, tlo, thi);
        std::vector<double> edge = c->set;
        if (!c->not_in) edge.insert(edge.end(), {c->lo - 1, c->hi + 1});
        else if (c->lo <= c->hi) edge.insert(edge.end(), {c->lo, c->hi});
        for (double x : edge) {
            if (x < tlo || x > thi || rejects(*c, x)) continue;
            Plan p = base_plan;
            set_scalar(p.v[static_cast<std::size_t>(c->arg)], q, x);
            SeededSource content(seed ^ 0xc0ffee);
            Call call;
            if (!materialize(p, build, content, call, init_plan ? &*init_plan : nullptr)) continue;
            const auto e = expected(call);
            const std::int64_t st = call.run();
            const bool ok = e ? st == e->status : std::find(row.ok.begin(), row.ok.end(), st) != row.ok.end();
            if (!ok)
                problems.push_back(tag + row.args[static_cast<std::size_t>(c->arg)].name + " = " + fmt(x) +
                                   " (valid edge): status " + std::to_string(st) +
                                   (e ? ", the row predicts " + std::to_string(e->status) : ", outside the success set"));
        }
    }
    return problems;
}

}  // namespace zeps::contract
