// Re-entrancy: eight threads run every contract row at once, each on its own
// buffers and states (stateful rows: initialiser, then a sequence of calls
// on one state), and must give exactly the single-threaded results. Run in
// the ThreadSanitizer build (ZEPS_TSAN) this also proves the absence of data
// races; new families take part through their contract rows.
#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <thread>

#include "tests/contract/contract.h"

namespace zeps::contract {
namespace {

constexpr int kThreads = 8;
constexpr int kSteps = 6;

std::vector<const Row*> rows_to_run() {
    std::vector<const Row*> rows;
    for (const std::vector<Row>* list : {&library_rows(), &selftest_rows()})
        for (const Row& r : *list)
            if (std::string(r.name).find(".faulty.") == std::string::npos && validate(r).empty()) rows.push_back(&r);
    return rows;
}

/// Statuses and every byte of a sequence of valid calls of one row.
std::vector<std::uint8_t> run_sequence(const Row& row, int build, std::uint64_t seed) {
    SeededSource src(seed);
    std::vector<std::uint8_t> digest;
    const int si = state_arg(row);
    std::optional<Plan> init;
    if (si >= 0) init = valid_plan(*find_row(row.args[static_cast<std::size_t>(si)].init), src);
    Buffer state;
    for (int step = 0; step < kSteps; ++step) {
        Call c;
        if (!materialize(valid_plan(row, src), build, src, c, init ? &*init : nullptr, step && si >= 0 ? &state : nullptr))
            return {0xff};
        Call twin = c.clone();  // an initialiser's state: inner pointers told from data
        const std::int64_t st = c.run();
        twin.run();
        mark_state_pointers(c, twin);
        digest.push_back(static_cast<std::uint8_t>(st));
        const auto snap = c.snapshot();
        digest.insert(digest.end(), snap.begin(), snap.end());
        if (si >= 0) state = std::move(c.buf[static_cast<std::size_t>(si)]);
    }
    return digest;
}

TEST(Threads, ConcurrentCallsGiveTheSingleThreadedResults) {
    const std::vector<const Row*> rows = rows_to_run();
    std::vector<std::vector<std::uint8_t>> reference;
    for (const Row* r : rows)
        for (int build : {0, 1}) reference.push_back(run_sequence(*r, build, 42));

    std::atomic<int> mismatches{0};
    std::latch start(kThreads);
    std::vector<std::thread> pool;
    for (int t = 0; t < kThreads; ++t)
        pool.emplace_back([&] {
            start.arrive_and_wait();
            for (int round = 0; round < 3; ++round) {
                std::size_t k = 0;
                for (const Row* r : rows)
                    for (int build : {0, 1})
                        if (run_sequence(*r, build, 42) != reference[k++]) {
                            ++mismatches;
                            ADD_FAILURE() << r->name << " [" << (build ? "n8" : "u8") << "]";
                        }
            }
        });
    for (auto& th : pool) th.join();
    EXPECT_EQ(mismatches.load(), 0);
    EXPECT_GE(rows.size(), 1u);
}

}  // namespace
}  // namespace zeps::contract
