// Declarative calling contracts of the exports, and the machinery that
// checks them (contract test, fuzz driver, thread test).
//
// One row per export says, in a few lines, what the export's argument checks
// are: its pointer arguments with the length each needs, its scalar
// arguments with their valid values, and its checks in check order with the
// status each gives. Required pointers are checked first in argument order
// (-8) unless the row lists its null checks explicitly (a departure). A row:
//
//     {"zepsLagWindow_G729_32s_I",
//      {io(T::s32, "pSrcDst", arg(1)), sc("len", 1, 12)},
//      {below(1, 1, zepStsSizeErr), above(1, 12, zepStsRangeErr)}},
//
// State blocks: the initialiser's row declares `state_out(bytes)`, each
// processing row declares `state("<init row>")`; calls then run on a block
// that the initialiser (same processor build, valid arguments) has filled.
// Documented exceptions: `.noop()` marks a check whose status (often 0)
// comes with nothing done; `.writes()` one that may leave earlier outputs
// written.
//
// Rows are matched by name against the export list, and their argument kinds
// and element sizes against the declarations in zepsc.h.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "zepsc.h"

namespace zeps::contract {

// ------------------------------------------------------------ exports
/// One argument value as passed to an export.
struct Val {
    void* p = nullptr;
    std::int64_t i = 0;
    double f = 0;
};
enum class PKind : std::uint8_t { Ptr, Int, Float };
struct Param {
    PKind kind;
    unsigned size;  // pointee size for pointers (0: void), else the scalar's size
    bool is_signed;
};
using Code = void (*)();
using Invoke = std::int64_t (*)(Code, const Val*);
/// An export with both processor builds and a type-safe caller.
struct Export {
    std::string name;
    std::vector<Param> params;
    bool returns_status;  // false: returns a pointer (zepscGetLibVersion)
    Invoke invoke;
    Code build[2];  // u8, n8
};
namespace detail {
template <class P>
Param param_of() {
    if constexpr (std::is_pointer_v<P>) {
        using E = std::remove_cv_t<std::remove_pointer_t<P>>;
        if constexpr (std::is_void_v<E>) return {PKind::Ptr, 0, false};
        else if constexpr (!requires { sizeof(E); }) return {PKind::Ptr, 0, false};  // opaque state type
        else return {PKind::Ptr, static_cast<unsigned>(sizeof(E)), std::is_signed_v<E>};
    } else if constexpr (std::is_floating_point_v<P>) {
        return {PKind::Float, static_cast<unsigned>(sizeof(P)), true};
    } else {
        return {PKind::Int, static_cast<unsigned>(sizeof(P)), std::is_signed_v<P>};
    }
}

template <class P>
P to_param(const Val& v) {
    if constexpr (std::is_pointer_v<P>) return static_cast<P>(v.p);
    else if constexpr (std::is_floating_point_v<P>) return static_cast<P>(v.f);
    else return static_cast<P>(v.i);
}

template <class R, class... A>
std::int64_t invoke_as(Code code, const Val* v) {
    auto f = reinterpret_cast<R (*)(A...)>(code);
    return [&]<std::size_t... I>(std::index_sequence<I...>) -> std::int64_t {
        R r = f(to_param<A>(v[I])...);
        if constexpr (std::is_pointer_v<R>) return static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(r));
        else return static_cast<std::int64_t>(r);
    }(std::index_sequence_for<A...>{});
}

template <class R, class... A>
Export make_export(const char* name, R (*u8)(A...), R (*n8)(A...)) {
    return {name, {param_of<A>()...}, !std::is_pointer_v<R>, &invoke_as<R, A...>,
            {reinterpret_cast<Code>(u8), reinterpret_cast<Code>(n8)}};
}

}  // namespace detail
using detail::make_export;

/// Every export of the library, in export-list order.
const std::vector<Export>& library_exports();
/// Library exports plus the ones registered with add_export (self-test).
const Export* find_export(const std::string& name);
void add_export(Export e);

// ------------------------------------------------------------ rows
enum class T : std::uint8_t { u8, s16, s32, f32, sc32, fc32, byte };
unsigned elem_size(T t);

struct Call;
using LenFn = std::int64_t (*)(const Call&);
/// Element count of a buffer: a constant, a scalar argument times mul plus
/// add, or any function of the call.
struct Len {
    std::int64_t n = 0;
    int arg = -1;
    std::int64_t mul = 1, add = 0;
    LenFn fn = nullptr;
};
inline Len n(std::int64_t k) { return {k}; }
inline Len arg(int i, std::int64_t add = 0, std::int64_t mul = 1) { return {0, i, mul, add}; }
inline Len fn(LenFn f) { return {0, -1, 1, 0, f}; }

enum class Dir : std::uint8_t { In, Out, InOut, StateOut, State, Scalar };
struct Arg {
    const char* name;
    Dir dir;
    T type = T::byte;
    Len len{};
    double lo = 0, hi = -1;          // valid scalar range, or content range of a pointer (lo > hi: any)
    std::vector<double> pick{};      // valid scalar values (instead of lo..hi)
    const char* init = nullptr;      // Dir::State: row of the initialiser
    bool optional = false;           // a null pointer is allowed (not checked)
    bool raw_only = false;
    bool unchecked = false;
    bool precondition = false;
    bool self_ref = false;
    std::int64_t offset = 0;
    void (*shape)(Call&, int) = nullptr;
    /// A null pointer is valid (documented as optional): never checked.
    Arg& opt() { optional = true; return *this; }
    /// Its null check is not documented: never checked, never passed null.
    Arg& unchecked_ptr() { unchecked = true; return *this; }
    /// Contents are any bytes, even in valid calls.
    Arg& raw() { raw_only = true; return *this; }
    /// Contents in lo..hi (and `shape`) are the caller's duty: the fuzzer keeps them valid.
    Arg& pre() { precondition = true; return *this; }
    /// A state block that holds pointers into itself: a copy has them moved
    /// to the copy, and snapshots hold them as offsets from the block start.
    Arg& self_referencing() { self_ref = true; return *this; }
    /// The pointer passed is element k of the buffer (the export reads k elements before it).
    Arg& at(std::int64_t k) { offset = k; return *this; }
    /// Adjusts valid contents after the buffer is filled (per-element ranges).
    Arg& shaped(void (*f)(Call&, int)) { shape = f; return *this; }
};
inline Arg in(T t, const char* name, Len len, double lo = 0, double hi = -1) { return {name, Dir::In, t, len, lo, hi}; }
inline Arg out(T t, const char* name, Len len) { return {name, Dir::Out, t, len}; }
inline Arg io(T t, const char* name, Len len, double lo = 0, double hi = -1) { return {name, Dir::InOut, t, len, lo, hi}; }
inline Arg state_out(const char* name, Len bytes) { return {name, Dir::StateOut, T::byte, bytes}; }
inline Arg state(const char* name, const char* init_row) {
    Arg a{name, Dir::State, T::byte};
    a.init = init_row;
    return a;
}
inline Arg sc(const char* name, double lo, double hi) { return {name, Dir::Scalar, T::byte, {}, lo, hi}; }
inline Arg sc(const char* name, std::initializer_list<double> values) {
    Arg a{name, Dir::Scalar};
    a.pick = values;
    return a;
}

/// Scalar overrides (argument index, value) that make a plan violate a rule.
using Overrides = std::vector<std::pair<int, double>>;
enum class CK : std::uint8_t { NonNull, Reject, Rule };
struct Check {
    CK kind;
    int arg;     // NonNull, Reject: the argument checked
    int status;  // status of a violation
    // Reject: the check fails when the scalar lies in [lo, hi], or (not_in)
    // when it is none of `set`.
    double lo = 0, hi = 0;
    std::vector<double> set{};
    bool not_in = false;
    // Rule: any condition; `violated` decides it on a materialised call,
    // `examples` (scalar overrides) or `spoil` (content changes) produce violations.
    bool (*violated)(const Call&) = nullptr;
    std::vector<Overrides> examples{};
    // k-th content violation, false when no more; buffers may be short when
    // an earlier check is violated too (check Call::count first).
    bool (*spoil)(Call&, int k) = nullptr;
    const char* what = "";
    bool noop = false;    // documented exception: this status comes with nothing done
    bool writes = false;  // documented exception: outputs may be partly written
    Check& nothing_done() { noop = true; return *this; }
    Check& may_write() { writes = true; return *this; }
};
inline Check nonnull(int i) { return {CK::NonNull, i, zepStsNullPtrErr}; }
inline Check reject(int i, double lo, double hi, int st) { return {CK::Reject, i, st, lo, hi}; }
inline Check below(int i, double v, int st) { return reject(i, -1e300, v - 1, st); }
inline Check above(int i, double v, int st) { return reject(i, v + 1, 1e300, st); }
inline Check not_in(int i, std::initializer_list<double> ok, int st) {
    Check c{CK::Reject, i, st, 1, 0};  // empty interval: only `set` is valid
    c.set = ok;
    c.not_in = true;
    return c;
}
inline Check outside(int i, double lo, double hi, int st) {
    Check c = not_in(i, {}, st);
    c.lo = lo;
    c.hi = hi;
    return c;
}
inline Check rule(const char* what, int st, bool (*violated)(const Call&), std::vector<Overrides> examples,
                  bool (*spoil)(Call&, int) = nullptr) {
    Check c{CK::Rule, -1, st};
    c.what = what;
    c.violated = violated;
    c.examples = std::move(examples);
    c.spoil = spoil;
    return c;
}

struct Row {
    const char* name;
    std::vector<Arg> args;
    std::vector<Check> checks{};     // in check order (see the top of this file)
    std::vector<int> ok{zepStsNoErr};  // statuses of a call that passes every check
};

/// The rows of the library's exports (contract_rows.cpp).
const std::vector<Row>& library_rows();
/// Self-test rows over small model exports (selftest_rows.cpp).
const std::vector<Row>& selftest_rows();
const Row* find_row(const std::string& name);  // library rows, then self-test rows

// ------------------------------------------------------------ calls
/// Source of decisions: seeded (tests) or the fuzzer's input bytes.
class Source {
public:
    virtual ~Source() = default;
    virtual std::uint64_t next() = 0;
    /// Raw bytes for buffer contents (the fuzzer takes them from its input).
    virtual void fill(std::uint8_t* dst, std::size_t n);
    std::int64_t uniform(std::int64_t lo, std::int64_t hi);
    bool chance(unsigned one_in) { return next() % one_in == 0; }
    /// Buffers may get raw bytes beyond their declared ranges (fuzzing only:
    /// checks on contents then fire).
    bool raw_contents = false;
};
class SeededSource final : public Source {
public:
    explicit SeededSource(std::uint64_t s) : s_(s) {}
    std::uint64_t next() override;

private:
    std::uint64_t s_;
};

/// The scalar values and null pointers of a call, before its buffers exist.
struct Plan {
    const Row* row = nullptr;
    std::vector<Val> v;       // scalar values (pointer slots unused)
    std::vector<bool> null;   // which pointers are null
};

/// A 16-byte aligned block of exactly max(bytes, 1) bytes, uninitialised.
inline std::uint8_t* alloc_block(std::size_t bytes) {
    void* p = nullptr;
    if (posix_memalign(&p, 16, bytes < 1 ? 1 : bytes) != 0) std::abort();
    return static_cast<std::uint8_t*>(p);
}

/// Frees a block from alloc_block.
struct FreeBlock {
    void operator()(std::uint8_t* p) const { std::free(p); }
};

struct Buffer {
    // 16-byte aligned and exactly `bytes` long (so an overrun is still caught):
    // every copy of a block then has the same alignment, and a state that the
    // library places at the first 16-byte boundary inside it lands at the same
    // offset in the original and in its copies.
    std::unique_ptr<std::uint8_t[], FreeBlock> data;
    std::size_t bytes = 0;
    // Offsets of the words that hold pointers into the block itself (a
    // self-referencing state), found when the state was initialised by
    // comparing two initialisations at different addresses. Only these
    // words are moved by a copy and written as offsets in a snapshot: a data
    // word whose value happens to look like an address is never touched.
    std::vector<std::size_t> inner;
};

/// A materialised call: every buffer allocated with exactly the length the
/// contract gives (at least one byte), filled, and the state initialised.
struct Call {
    const Row* row = nullptr;
    const Export* ex = nullptr;
    int build = 0;
    std::vector<Val> v;
    std::vector<bool> null;
    std::vector<Buffer> buf;          // one per argument (empty for scalars)
    std::shared_ptr<const Plan> init;  // the initialiser's plan, for state rows

    std::int64_t s(int i) const { return v[static_cast<std::size_t>(i)].i; }
    std::int64_t init_s(int i) const { return init->v[static_cast<std::size_t>(i)].i; }  // initialiser's scalar
    template <class E>
    E* ptr(int i) const { return reinterpret_cast<E*>(buf[static_cast<std::size_t>(i)].data.get()); }
    std::size_t count(int i) const;  // elements of buffer i
    Call clone() const;
    void bind();                       // points the pointer arguments at the buffers
    std::int64_t run();                // binds and calls the export of `build`
    std::vector<std::uint8_t> snapshot() const;  // every buffer's bytes, in order
};

/// Copies a buffer; the inner pointers of a self-referencing state block
/// (Buffer::inner) are moved to the same offsets in the copy.
Buffer copy_buffer(const Buffer& b);
/// Records in both blocks the words that hold pointers into their own block:
/// `a` and `b` were initialised alike at different addresses, so a pointer
/// word differs by exactly the distance of the blocks and a data word not at all.
void mark_inner_pointers(Buffer& a, Buffer& b);
/// mark_inner_pointers on the self-referencing state outputs of two calls of
/// an initialiser that ran alike (a call and its clone).
void mark_state_pointers(Call& a, Call& b);
/// Calls another export of the call's build (size queries inside length functions).
std::int64_t call_export(const Call& c, const char* name, std::initializer_list<Val> args);
inline Val I(std::int64_t x) { Val v; v.i = x; return v; }
inline Val P(void* p) { Val v; v.p = p; return v; }

/// Problems with a row that would make every check meaningless (unknown
/// export, argument kinds or sizes that disagree with the declaration).
std::vector<std::string> validate(const Row& row);
/// A plan of valid scalars and no null pointer.
Plan valid_plan(const Row& row, Source& src);
/// A plan whose scalars are mostly valid, sometimes edge or arbitrary values,
/// and whose pointers are rarely null (fuzzing).
Plan fuzz_plan(const Row& row, Source& src);
/// Allocates and fills the buffers (valid contents in the declared ranges,
/// outputs filled with the canary 0xA5), and initialises the state with
/// `init` (a valid plan of the initialiser when null). Returns false when
/// the initialiser failed (possible with a fuzzed init plan).
/// With `state` given, the state argument takes a copy of that block instead
/// (a sequence of calls on one state).
bool materialize(const Plan& plan, int build, Source& src, Call& call, const Plan* init = nullptr,
                 const Buffer* state = nullptr);
/// Index of the state argument of a row (-1: none).
int state_arg(const Row& row);
/// Status of the first failing check, if any.
struct Expect {
    int status;
    const Check* check;
};
std::optional<Expect> expected(const Call& call);
/// Values of one argument that violate a Reject check (boundaries, extremes).
std::vector<double> bad_values(const Call& call, const Check& c);
/// Runs every contract property of one row on one build (null pointers,
/// each out-of-range value, check order, nothing written on error) and
/// returns the problems found, empty when the export keeps its contract.
std::vector<std::string> check_row(const Row& row, int build, std::uint64_t seed);
/// True when `st` is a value the library may return at all.
bool is_library_status(std::int64_t st);

}  // namespace zeps::contract
