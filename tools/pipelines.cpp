// SPDX-License-Identifier: BSD-3-Clause
#include "tools/pipelines.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace zepsc_cli {

namespace {

// ITU-T G.729 pre-processing filter (140 Hz, Q12), b0 b1 b2 a0 a1 a2; the
// GSM-AMR pre-processing filter has the same coefficients and structure.
constexpr Zep16s kHighPass140[6] = {1899, -3798, 1899, 4096, 7807, -3733};
// G.729 reset values of the LSP memory and of the MA predictor memory rows.
constexpr Zep16s kLspReset[10] = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};
constexpr Zep16s kFreqPrevReset[10] = {2339, 4679, 7018, 9358, 11698, 14037, 16377, 18717, 21056, 23396};

std::vector<Zep8u> new_high_pass() {
    Zep32s size = 0;
    zepsHighPassFilterSize_G729(&size);
    std::vector<Zep8u> st(static_cast<std::size_t>(size));
    zepsHighPassFilterInit_G729(kHighPass140, st.data());
    return st;
}

// LP analysis of a 240-sample window with the G.729 stages: windowed
// autocorrelation, lag window, Levinson-Durbin. Keeps `a` (Q12) when the
// recursion reports an unstable filter. Returns false on a failed stage.
bool lp_analysis(const Zep16s* window, Zep16s* a) {
    Zep16s norm = 0, rc[10], err = 0, a_new[11];
    Zep32s r[13];
    if (zepsAutoCorr_G729B(window, &norm, r) != zepStsNoErr) return false;
    if (zepsLagWindow_G729_32s_I(r + 1, 10) != zepStsNoErr) return false;
    const ZepStatus s = zepsLevinsonDurbin_G729_32s16s(r, 10, a_new, rc, &err);
    if (s == zepStsNoErr) std::memcpy(a, a_new, sizeof a_new);
    return s == zepStsNoErr || s == zepStsOverflow;
}

Zep16s clamp16(double v) { return static_cast<Zep16s>(std::lround(std::clamp(v, -32768.0, 32767.0))); }

}  // namespace

// ---------------------------------------------------------------- G.729

G729FrontEnd::G729FrontEnd() : hp_state_(new_high_pass()) {
    std::copy(std::begin(kLspReset), std::end(kLspReset), lsp_old_.begin());
    for (int row = 0; row < 4; ++row) std::copy(std::begin(kFreqPrevReset), std::end(kFreqPrevReset), &freq_prev_[row * 10]);
    a_[0] = 4096;
}

LpFrame G729FrontEnd::process(const Zep16s* frame) {
    LpFrame out;
    std::memmove(window_.data(), window_.data() + 80, (240 - 80) * sizeof(Zep16s));
    Zep16s* cur = window_.data() + 160;
    std::memcpy(cur, frame, 80 * sizeof(Zep16s));
    bool ok = zepsHighPassFilter_G729_16s_ISfs(cur, 80, 12, hp_state_.data()) == zepStsNoErr;
    ok = lp_analysis(window_.data(), a_.data()) && ok;
    Zep16s lsp[10];
    ok = zepsLPCToLSP_G729_16s(a_.data(), lsp_old_.data(), lsp) == zepStsNoErr && ok;
    std::copy(lsp, lsp + 10, lsp_old_.begin());
    ok = zepsLSPQuant_G729_16s(lsp, freq_prev_.data(), out.qlsp.data(), out.index.data()) == zepStsNoErr && ok;

    // Weighted speech through A(z)/A(z/0.75), the Annex A weighting.
    std::memmove(wsp_.data(), wsp_.data() + 80, 143 * sizeof(Zep16s));
    double g[11];
    g[0] = 1.0;
    for (int i = 1; i <= 10; ++i) g[i] = g[i - 1] * 0.75;
    for (int n = 0; n < 80; ++n) {
        double e = cur[n];
        for (int i = 1; i <= 10; ++i) e += a_[i] / 4096.0 * res_mem_[i - 1];
        double w = e;
        for (int i = 1; i <= 10; ++i) w -= a_[i] / 4096.0 * g[i] * wsp_mem_[i - 1];
        std::memmove(&res_mem_[1], &res_mem_[0], 9 * sizeof(double));
        std::memmove(&wsp_mem_[1], &wsp_mem_[0], 9 * sizeof(double));
        res_mem_[0] = cur[n];
        wsp_mem_[0] = w;
        wsp_[143 + n] = clamp16(w);
    }
    ok = zepsOpenLoopPitchSearch_G729_16s(wsp_.data() + 143, &out.lag) == zepStsNoErr && ok;
    if (!ok) ++failures_;
    return out;
}

// ---------------------------------------------------------------- GSM-AMR

const char* frame_type_name(FrameType t) {
    switch (t) {
        case FrameType::Speech: return "SPEECH";
        case FrameType::SidFirst: return "SID_FIRST";
        case FrameType::SidUpdate: return "SID_UPDATE";
        case FrameType::NoData: return "NO_DATA";
    }
    return "?";
}

AmrVad::AmrVad(int option, Zep32s rate) : option_(option), rate_(rate), hp_state_(new_high_pass()) {
    zepsVAD1StateReset_GSMAMR(&vad1_);
    zepsVAD2StateReset_GSMAMR(&vad2_);
    old_lags_.fill(40);
    regs_ = {40, 0, 0, 0, 0, 0, 0, 13106};
}

VadFrame AmrVad::process(const Zep16s* frame) {
    VadFrame out;
    std::memmove(hist_.data(), hist_.data() + 160, 160 * sizeof(Zep16s));
    Zep16s* cur = hist_.data() + 160;
    std::memcpy(cur, frame, 160 * sizeof(Zep16s));
    bool ok = zepsHighPassFilter_G729_16s_ISfs(cur, 160, 12, hp_state_.data()) == zepStsNoErr;

    // The detector runs before this frame's open-loop search, on the
    // registers the previous search left, as the GSM-AMR encoder orders them.
    Zep16s flag = 0;
    if (option_ == 1) {
        vad1_.pitch = regs_[4];
        ok = zepsVAD1_GSMAMR_16s(cur - 40, &vad1_, &flag, regs_[7], regs_[3]) == zepStsNoErr && ok;
        regs_[4] = vad1_.pitch;  // the detector may clear its top bits
    } else {
        ok = zepsVAD2_GSMAMR_16s(cur, &vad2_, &flag, ltp_flag_) == zepStsNoErr && ok;
    }
    out.vad = flag;

    Zep16s used_mode = static_cast<Zep16s>(rate_), sid = 0;  // sid: SID parameters to compute
    ok = zepsEncDTXHandler_GSMAMR_16s(&hangover_, &elapsed_, &used_mode, &sid, flag) == zepStsNoErr && ok;
    if (used_mode != zepRateDTX) {
        sid_update_counter_ = 8;
        out.type = FrameType::Speech;
    } else if (--sid_update_counter_, prev_type_ == FrameType::Speech) {
        out.type = FrameType::SidFirst;
        sid_update_counter_ = 3;
    } else if (sid_update_counter_ <= 0) {
        out.type = FrameType::SidUpdate;
        sid_update_counter_ = 8;
    } else {
        out.type = FrameType::NoData;
    }
    prev_type_ = out.type;

    // LP analysis of the frame (one set for all four subframes), then the
    // open-loop search on the frame's weighted speech.
    Zep16s a[11] = {4096};
    lp_analysis(cur + 160 - 240, a);
    Zep16s lpc[44];
    for (int s = 0; s < 4; ++s) std::memcpy(lpc + 11 * s, a, sizeof a);
    Zep16s wsp[160], lags[2];
    if (option_ == 1) {
        ok = zepsOpenLoopPitchSearchDTXVAD1_GSMAMR_16s(lpc, cur - 10, wgt_mem_.data(), wsp_hist_.data(), old_lags_.data(),
                                                       gain_flags_.data(), regs_.data(), wsp, lags, rate_) ==
                 zepStsNoErr &&
             ok;
    } else {
        Zep32s rmax = 0, r0 = 0;
        ok = zepsOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s(lpc, cur - 10, wgt_mem_.data(), wsp_hist_.data(),
                                                          old_lags_.data(), gain_flags_.data(), regs_.data(), wsp, lags,
                                                          &rmax, &r0, rate_) == zepStsNoErr &&
             ok;
        // LTP_flag_update: L_Rmax > Mpy_32_16(L_R0, thresh), thresh by rate.
        const Zep16s thresh = (rate_ == zepRateGSMAMR_475 || rate_ == zepRateGSMAMR_515) ? 18022
                              : rate_ == zepRateGSMAMR_102                               ? 19660
                                                                                         : 21299;
        const Zep16s hi = static_cast<Zep16s>(r0 >> 16);
        const Zep16s lo = static_cast<Zep16s>((r0 >> 1) - (static_cast<Zep32s>(hi) << 15));
        const std::int64_t prod = 2LL * hi * thresh + 2LL * ((static_cast<Zep32s>(lo) * thresh) >> 15);
        ltp_flag_ = rmax > prod ? 1 : 0;
    }
    if (!ok) ++failures_;
    return out;
}

// ---------------------------------------------------------------- G.726

std::vector<Zep16s> g726_round_trip(const std::vector<Zep16s>& pcm, Zep32s rate, std::vector<Zep8u>* codes_out) {
    Zep32s esize = 0, dsize = 0;
    zepsEncodeGetStateSize_G726_16s8u(&esize);
    zepsDecodeGetStateSize_G726_8u16s(&dsize);
    std::vector<Zep8u> enc(static_cast<std::size_t>(esize)), dec(static_cast<std::size_t>(dsize));
    auto* es = reinterpret_cast<ZepG726EncodeState*>(enc.data());
    auto* ds = reinterpret_cast<ZepG726DecodeState*>(dec.data());
    zepsEncodeInit_G726_16s8u(es, rate);
    zepsDecodeInit_G726_8u16s(ds, rate, 2);
    std::vector<Zep16s> in14(pcm.size()), out(pcm.size());
    std::vector<Zep8u> codes(pcm.size());
    for (std::size_t i = 0; i < pcm.size(); ++i) in14[i] = static_cast<Zep16s>(pcm[i] >> 2);
    if (!pcm.empty()) {
        const Zep32s n = static_cast<Zep32s>(pcm.size());
        zepsEncode_G726_16s8u(es, in14.data(), codes.data(), n);
        zepsDecode_G726_8u16s(ds, codes.data(), out.data(), n);
    }
    for (Zep16s& s : out) s = static_cast<Zep16s>(s * 4);
    if (codes_out) *codes_out = std::move(codes);
    return out;
}

// ---------------------------------------------------------------- sub-band

void measure_delay_snr(const std::vector<Zep16s>& x, const std::vector<Zep16s>& y, int max_delay, int skip, int& delay,
                       double& gain, double& snr_db) {
    double best_c = -2;
    delay = 0;
    gain = 0;
    for (int d = 0; d <= max_delay; ++d) {
        double xy = 0, yy = 0, xx = 0;
        for (std::size_t n = static_cast<std::size_t>(skip); n + d < y.size() && n < x.size(); ++n) {
            xy += double(x[n]) * y[n + d];
            yy += double(y[n + d]) * y[n + d];
            xx += double(x[n]) * x[n];
        }
        const double c = xy / std::sqrt(xx * yy + 1e-30);
        if (c > best_c) {
            best_c = c;
            delay = d;
            gain = yy > 0 ? xy / yy : 0;
        }
    }
    double sig = 0, err = 0;
    for (std::size_t n = static_cast<std::size_t>(skip); n + delay < y.size() && n < x.size(); ++n) {
        const double e = x[n] - gain * y[n + delay];
        sig += double(x[n]) * x[n];
        err += e * e;
    }
    snr_db = err > 0 ? 10 * std::log10(sig / err) : INFINITY;
}

SubbandResult subband_round_trip(const std::vector<Zep16s>& pcm, char config, bool fixed_point) {
    const int order = config == 'A' ? 5 : 6, F = config == 'A' ? 24 : 44, L = config == 'A' ? 128 : 256;
    const int bins = (1 << order) / 2 + 1;
    SubbandResult r;
    int ssize = 0, isize = 0, bsize = 0;
    if (fixed_point)
        zepsSubbandProcessGetSize_16s(order, L, &ssize, &isize, &bsize);
    else
        zepsSubbandProcessGetSize_32f(order, L, &ssize, &isize, &bsize);
    std::vector<Zep8u> an(static_cast<std::size_t>(ssize)), sy(an.size()), buf(static_cast<std::size_t>(bsize)),
        init(static_cast<std::size_t>(std::max(isize, 1)));
    const std::size_t frames = pcm.size() / static_cast<std::size_t>(F);
    r.out.assign(frames * F, 0);
    if (fixed_point) {
        zepsSubbandProcessInit_16s(an.data(), order, F, L, nullptr, init.data());
        zepsSubbandProcessInit_16s(sy.data(), order, F, L, nullptr, init.data());
        std::vector<Zep32sc> bands(static_cast<std::size_t>(bins));
        for (std::size_t t = 0; t < frames; ++t) {
            zepsSubbandAnalysis_16s32sc_Sfs(&pcm[t * F], bands.data(), an.data(), 0, buf.data());
            zepsSubbandSynthesis_32sc16s_Sfs(bands.data(), &r.out[t * F], sy.data(), 0, buf.data());
        }
    } else {
        zepsSubbandProcessInit_32f(an.data(), order, F, L, nullptr, init.data());
        zepsSubbandProcessInit_32f(sy.data(), order, F, L, nullptr, init.data());
        std::vector<Zep32fc> bands(static_cast<std::size_t>(bins));
        std::vector<Zep32f> in(static_cast<std::size_t>(F)), out(static_cast<std::size_t>(F));
        for (std::size_t t = 0; t < frames; ++t) {
            for (int i = 0; i < F; ++i) in[i] = pcm[t * F + i];
            zepsSubbandAnalysis_32f32fc(in.data(), bands.data(), an.data(), buf.data());
            zepsSubbandSynthesis_32fc32f(bands.data(), out.data(), sy.data(), buf.data());
            for (int i = 0; i < F; ++i) r.out[t * F + i] = clamp16(out[i]);
        }
    }
    measure_delay_snr(pcm, r.out, 2 * L, L, r.delay, r.gain, r.snr_db);
    return r;
}

}  // namespace zepsc_cli
