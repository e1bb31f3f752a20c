// What the shared reference data holds, apart from the replays (which serve
// any file of the same format, a user's own recordings included): every
// vector file parses, and the files the library was validated against hold
// the cases they were recorded with.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/vec_reader.h"

namespace zeps::test {
namespace {

struct Recorded {
    const char* file;  // below vectors/
    std::size_t cases;  // "@ case" entries (stream resets not counted)
};
constexpr Recorded kRecorded[] = {
    {"g729/zepsOpenLoopPitchSearch_G729_16s.vec", 1460},
    {"g729/zepsOpenLoopPitchSearch_G729A_16s.vec", 1460},
    {"g729/zepsAdaptiveCodebookSearch_G729_16s.vec", 1485},
    {"g729/zepsAdaptiveCodebookSearch_G729A_16s.vec", 1361},
    {"g729/zepsAdaptiveCodebookGain_G729_16s.vec", 1444},
    {"g729/zepsAdaptiveCodebookGain_G729A_16s.vec", 1444},
    {"amr/zepsEncDTXBuffer_GSMAMR_16s.vec", 1363},
    {"amr/zepsDecDTXBuffer_GSMAMR_16s.vec", 980},
    {"amr/zepsEncDTXHandler_GSMAMR_16s.vec", 3648},
    {"amr/zepsEncDTXSID_GSMAMR_16s.vec", 1611},
    {"amr/zepsOpenLoopPitchSearchNonDTX_GSMAMR_16s.vec", 816},
    {"amr/zepsOpenLoopPitchSearchDTXVAD1_GSMAMR_16s.vec", 816},
    {"amr/zepsOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s.vec", 816},
    {"amr/zepsVAD1_GSMAMR_16s.vec", 2410},
    {"amr/zepsVAD2_GSMAMR_16s.vec", 2410},
    {"amr/zepsFFTFwd_RToPerm_GSMAMR_16s_I.vec", 1561},
};

std::size_t cases_of(const VecFile& f) {
    std::size_t n = 0;
    for (const VecCase& c : f.cases) n += c.reset ? 0 : 1;
    return n;
}

TEST(SharedData, EveryVectorFileParsesAndHoldsCases) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors");
    int files = 0;
    for (const auto& e : std::filesystem::recursive_directory_iterator(shared_path("vectors"))) {
        if (e.path().extension() != ".vec") continue;
        SCOPED_TRACE(e.path().string());
        VecFile f;
        EXPECT_NO_THROW(f = load_vec(e.path().string()));
        EXPECT_GT(cases_of(f), 0u);
        ++files;
    }
    EXPECT_GT(files, 0);
}

TEST(SharedData, RecordedFilesHoldTheirCases) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors");
    for (const Recorded& r : kRecorded) {
        SCOPED_TRACE(r.file);
        EXPECT_EQ(cases_of(load_vec(shared_path(std::string("vectors/") + r.file))), r.cases);
    }
}

}  // namespace
}  // namespace zeps::test
