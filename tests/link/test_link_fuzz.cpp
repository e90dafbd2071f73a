// Seeded random traffic on the link: short buffers of arbitrary bytes, mostly behind a known
// first byte, at arbitrary receive thresholds and in every measure_mode and function_id,
// interleaved with ticks, new exchanges and commands. Whatever the instrument sends, the link must
// neither crash nor leave its ranges. Build with -fsanitize=address,undefined and
// -D_GLIBCXX_ASSERTIONS to have every array index checked as well.
#include "link/photometric.h"
#include "link_fixture.h"

#include <cmath>
#include <iterator>
#include <random>

using namespace lumora;
using LinkFuzz = lumora::test::link_test;

namespace {

constexpr std::uint8_t known_codes[] = {1,  2,  3,  4,  5,  6,   7,   8,   9,   10,  11,  12, 13,
                                        17, 34, 51, 68, 85, 102, 119, 120, 121, 136, 187, 204};
constexpr std::int16_t modes[] = {-1, 0, 1, 1, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
constexpr std::int16_t functions[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 13, 24, 99};
constexpr double special_lambdas[] = {0, 319, 319.5, 320, 379.5, 1100, 1100.5, 1110.5, 1111, 40000};

} // namespace

TEST_F(LinkFuzz, RandomRepliesNeverLeaveTheLinksRanges) {
    std::mt19937 rng(0x4c756d);
    const auto pick = [&](const auto& list) { return list[rng() % std::size(list)]; };
    const auto one_in = [&](unsigned n) { return rng() % n == 0; };
    QObject::connect(port.get(), &comm_port::OnComm, [] { on_comm_event(); });

    constexpr int steps = 400000;
    int frozen_frames = 0;
    for (int step = 0; step < steps; ++step) {
        if (one_in(8)) shared.measure_mode = pick(modes);
        if (one_in(8)) shared.function_id = pick(functions);
        if (one_in(16))
            shared.lambda_now =
                one_in(2) ? pick(special_lambdas) : std::uniform_real_distribution(300.0, 1120.0)(rng);
        if (one_in(64)) shared.default_lambda = one_in(2) ? pick(special_lambdas) : 546;
        if (one_in(64)) shared.scan_start_lambda = pick(special_lambdas);
        if (one_in(16)) shared.link_ready = one_in(2);
        if (one_in(16)) shared.zero_pending = one_in(2);
        if (one_in(16)) {
            shared.lambda_show_mode = static_cast<std::uint16_t>(rng() % 3);
            shared.lambda_four_digits = one_in(2);
        }
        reading_flag = one_in(2);
        baseline_at_start = one_in(2);
        if (one_in(10)) Timer1_Timer();
        if (one_in(20)) begin_exchange();
        if (one_in(20)) {
            try {
                send_message(static_cast<std::uint8_t>(rng()));
            } catch (const run_fault&) {
                // a wavelength that does not fit its bytes: the caller's handler ends there
            }
        }

        std::uint8_t buf[16];
        const std::size_t n = rng() % 17;
        for (std::size_t i = 0; i < n; ++i)
            buf[i] = static_cast<std::uint8_t>(rng());
        if (n > 0 && !one_in(4)) buf[0] = one_in(3) ? std::uint8_t{rsp_intensity} : pick(known_codes);
        if (one_in(2)) {
            recv_message(buf, n);
        } else {
            if (one_in(2)) port->RThreshold = static_cast<int>(rng() % 9);
            pipe->inject(QByteArray(reinterpret_cast<const char*>(buf), static_cast<qsizetype>(n)));
        }

        SCOPED_TRACE(testing::Message() << "step " << step << " first byte " << (n ? int(buf[0]) : -1));
        ASSERT_GE(shared.dark_count, 0);
        ASSERT_LE(shared.dark_count, 4);
        ASSERT_GE(shared.ring_head, 0);
        ASSERT_LT(shared.ring_head, ring_slots);
        ASSERT_GE(shared.reading_index, 0);
        ASSERT_TRUE(std::isfinite(shared.now_trans));
        ASSERT_GE(shared.now_abs, -0.3);
        ASSERT_LE(shared.now_abs, 4.5);
        ASSERT_GE(shared.now_percent_t, 0);
        ASSERT_LE(shared.now_percent_t, 120);
        frozen_frames += shared.reading_index > 10;
        calls.clear();
        panel_log.clear();
    }
    // The run must have reached the paths it is meant to check, not just the unknown-reply counter:
    // readings that cannot be shown (the index runs on past 10) and commands on the wire.
    EXPECT_GT(frozen_frames, 0);
    EXPECT_GT(shared.unknown_reply_count, 0);
    EXPECT_GT(pipe->written.size(), 0);
}
