// Small model exports that exercise every feature of the contract table
// (in-place buffer, size query, fixed-size state with init then process, a
// documented no-op exception, a check on buffer contents), and three faulty
// models the checks must catch. They are not library exports: they prove
// the machinery, in the contract test, the fuzz driver and the thread test.
#include <cstring>

#include "tests/contract/contract.h"

namespace zeps::contract {
namespace {

ZepStatus Scale(Zep16s* pSrcDst, int len, int scaleFactor) {
    if (!pSrcDst) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    if (len > 64) return zepStsRangeErr;
    if (scaleFactor < 0 || scaleFactor > 15) return zepStsScaleRangeErr;
    for (int i = 0; i < len; ++i) pSrcDst[i] = static_cast<Zep16s>(pSrcDst[i] >> scaleFactor);
    return zepStsNoErr;
}

struct CodecState {
    Zep32s rate, acc, count, mask;
};
static_assert(sizeof(CodecState) == 16);

ZepStatus CodecGetStateSize(Zep32s* pSize) {
    if (!pSize) return zepStsNullPtrErr;
    *pSize = sizeof(CodecState);
    return zepStsNoErr;
}

ZepStatus CodecInit(Zep8u* pState, Zep32s rate) {
    if (!pState) return zepStsNullPtrErr;
    if (rate != 17 && rate != 22 && rate != 23 && rate != 24) return zepStsRangeErr;
    const CodecState s{rate, 0, 0, rate == 17 ? 3 : rate == 22 ? 7 : rate == 23 ? 15 : 31};
    std::memcpy(pState, &s, sizeof s);
    return zepStsNoErr;
}

ZepStatus CodecEncode(Zep8u* pState, const Zep16s* pSrc, Zep8u* pDst, Zep32s len) {
    if (!pState || !pSrc || !pDst) return zepStsNullPtrErr;
    if (len == 0) return zepStsSizeErr;
    if (len < 0) return zepStsNoErr;  // documented: nothing done
    CodecState s;
    std::memcpy(&s, pState, sizeof s);
    for (Zep32s i = 0; i < len; ++i) {
        s.acc = static_cast<Zep32s>(static_cast<std::uint32_t>(s.acc) * 31u + static_cast<std::uint16_t>(pSrc[i]));
        pDst[i] = static_cast<Zep8u>(s.acc & s.mask);
    }
    s.count += 1;
    std::memcpy(pState, &s, sizeof s);
    return zepStsNoErr;
}

ZepStatus Decode(const Zep16s* pIdx, Zep16s* pDst) {
    if (!pIdx || !pDst) return zepStsNullPtrErr;
    if (pIdx[0] != 0 && pIdx[0] != 1) return zepStsOutOfRangeErr;
    for (int i = 0; i < 10; ++i) pDst[i] = static_cast<Zep16s>(pIdx[0] * 1000 + pIdx[1 + i % 3]);
    return zepStsNoErr;
}

// Faulty: writes its first sample before checking the scale factor.
ZepStatus LeakyScale(Zep16s* pSrcDst, int len, int scaleFactor) {
    if (!pSrcDst) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    pSrcDst[0] = 0;
    if (len > 64) return zepStsRangeErr;
    if (scaleFactor < 0 || scaleFactor > 15) return zepStsScaleRangeErr;
    return zepStsNoErr;
}

// Faulty: checks the length before the pointer.
ZepStatus LengthFirst(Zep16s* pSrcDst, int len, int scaleFactor) {
    if (len < 1) return zepStsSizeErr;
    return Scale(pSrcDst, len, scaleFactor);
}

// Faulty: refuses the largest valid length (an off-by-one in a range check).
ZepStatus OffByOne(Zep16s* pSrcDst, int len, int scaleFactor) {
    if (len == 64 && pSrcDst) return zepStsRangeErr;
    return Scale(pSrcDst, len, scaleFactor);
}

template <class F>
Export model(const char* name, F* f) {
    return make_export(name, f, f);
}

bool bad_mode(const Call& c) { return c.ptr<Zep16s>(0)[0] != 0 && c.ptr<Zep16s>(0)[0] != 1; }
bool spoil_mode(Call& c, int k) {
    static const Zep16s kBad[] = {2, -1, 32767, -32768};
    if (k >= 4) return false;
    c.ptr<Zep16s>(0)[0] = kBad[k];
    return true;
}

std::vector<Row> make_rows() {
    add_export(model("selftest.Scale", &Scale));
    add_export(model("selftest.CodecGetStateSize", &CodecGetStateSize));
    add_export(model("selftest.CodecInit", &CodecInit));
    add_export(model("selftest.CodecEncode", &CodecEncode));
    add_export(model("selftest.Decode", &Decode));
    add_export(model("selftest.faulty.LeakyScale", &LeakyScale));
    add_export(model("selftest.faulty.LengthFirst", &LengthFirst));
    add_export(model("selftest.faulty.OffByOne", &OffByOne));
    const Row scale{"selftest.Scale",
                    {io(T::s16, "pSrcDst", arg(1)), sc("len", 1, 64), sc("scaleFactor", 0, 15)},
                    {below(1, 1, zepStsSizeErr), above(1, 64, zepStsRangeErr), outside(2, 0, 15, zepStsScaleRangeErr)}};
    Row leaky = scale, first = scale, edge = scale;
    leaky.name = "selftest.faulty.LeakyScale";
    first.name = "selftest.faulty.LengthFirst";
    edge.name = "selftest.faulty.OffByOne";
    return {
        scale,
        {"selftest.CodecGetStateSize", {out(T::s32, "pSize", n(1))}},
        {"selftest.CodecInit", {state_out("pState", n(16)), sc("rate", {17, 22, 23, 24})},
         {not_in(1, {17, 22, 23, 24}, zepStsRangeErr)}},
        {"selftest.CodecEncode",
         {state("pState", "selftest.CodecInit"), in(T::s16, "pSrc", arg(3)), out(T::u8, "pDst", arg(3)),
          sc("len", 1, 2147483647)},
         {reject(3, 0, 0, zepStsSizeErr), below(3, 0, zepStsNoErr).nothing_done()}},
        {"selftest.Decode",
         {in(T::s16, "pIdx", n(4), 0, 1), out(T::s16, "pDst", n(10))},
         {rule("pIdx[0] not 0 or 1", zepStsOutOfRangeErr, &bad_mode, {}, &spoil_mode)}},
        leaky,
        first,
        edge,
    };
}

}  // namespace

const std::vector<Row>& selftest_rows() {
    static const std::vector<Row> rows = make_rows();
    return rows;
}

}  // namespace zeps::contract
