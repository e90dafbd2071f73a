// The command ring: a mailbox with a history that the 50 ms tick empties one slot at a time, the
// ping handshake in front of every exchange, and the bytes each command puts on the wire.
#include "link_fixture.h"

using namespace lumora;
using CommandRing = lumora::test::link_test;

TEST_F(CommandRing, ClosedPortQueuesNothingAndWritesNothing) {
    port->setPortOpen(false);
    shared.lambda_now = 500;
    send_message(cmd_goto_lambda);
    send_message(cmd_connect);
    EXPECT_EQ(shared.ring_head, 0);
    begin_exchange();
    EXPECT_TRUE(shared.link_ready) << "begin_exchange on a closed port changes nothing";
    Timer1_Timer();
    EXPECT_TRUE(pipe->written.isEmpty());
    EXPECT_TRUE(panels.empty());
}

TEST_F(CommandRing, OnlyTheLaterOfTwoCommandsBetweenTicksLeavesAndTheEarlierSlotBlocksTheRingLater) {
    shared.lambda_now = 500;
    send_message(cmd_goto_lambda);
    shared.lambda_now = 600;
    send_message(cmd_goto_lambda);
    Timer1_Timer();
    EXPECT_EQ(pipe->written, bytes({6, 2, 88}));
    EXPECT_EQ(shared.command_ring[0].payload_length, 3) << "the earlier slot keeps its bytes";

    // A thousand slots later ring_head comes back to the occupied slot 0.
    while (shared.ring_head != 0) {
        send_message(cmd_read_gain);
        Timer1_Timer();
    }
    const QByteArray before = pipe->written;
    EXPECT_EQ(before.size(), 3 + 998);
    for (int i = 0; i < 5; ++i) {
        send_message(cmd_read_dark);
        Timer1_Timer();
    }
    EXPECT_EQ(shared.ring_head, 0) << "an occupied slot refuses every later command";
    EXPECT_EQ(pipe->written, before) << "the ring stays blocked";
}

TEST_F(CommandRing, HeadWrapsAt1000AndATickAtHeadZeroSendsSlot999Once) {
    shared.ring_head = 999;
    send_message(cmd_read_dark);
    EXPECT_EQ(shared.ring_head, 0);
    Timer1_Timer();
    EXPECT_EQ(pipe->written, bytes({4}));
    EXPECT_EQ(shared.command_ring[999].payload_length, 0) << "a sent slot is free again";

    // The echo raises the threshold for the frames that follow; later ticks leave the stream alone.
    port->RThreshold = 6;
    shared.reading_index = 5;
    pipe->inject(bytes({68, 0}));
    Timer1_Timer();
    EXPECT_EQ(pipe->written, bytes({4})) << "a sent slot is not sent again";
    EXPECT_EQ(port->RThreshold, 6);
    EXPECT_EQ(shared.reading_index, 5);
    EXPECT_EQ(port->InBufferCount(), 2);
}

TEST_F(CommandRing, CommandBytesReplyThresholdsAndStatusTexts) {
    struct row {
        int code;
        double lambda, start, end;
        int speed;
        QByteArray wire;
        int threshold;
        const char* status;
    };
    const row rows[] = {
        {cmd_goto_lambda, 500, 0, 0, 0, bytes({6, 1, 244}), 1, ""},
        {cmd_read_lambda, 1100, 0, 0, 0, bytes({7, 4, 76}), 1, ""},
        {cmd_goto_lambda, 500.5, 0, 0, 0, bytes({6, 1, 244}), 1, ""}, // halves go to even: 500
        {cmd_goto_lambda, 501.5, 0, 0, 0, bytes({6, 1, 246}), 1, ""},
        {cmd_scan_sample, 0, 500, 1100, 2, bytes({11, 1, 244, 36, 76}), 1, ""},
        {cmd_scan_baseline_range, 0, 330, 1100, 1, bytes({10, 1, 74, 20, 76}), 1, ""},
        {cmd_scan_baseline_range, 0, 330, 1100, 0, bytes({10, 1, 74, 4, 76}), 1, ""},
        {cmd_scan_sample, 0, 330, 1100, 7, bytes({11, 1, 74, 4, 76}), 1, ""}, // unknown speed adds nothing
        {cmd_read_error_data, 0, 0, 0, 0, bytes({2}), 7, "Receiving error data..."},
        {cmd_search_zero, 0, 0, 0, 0, bytes({3}), 1, "Zero searching..."},
        {cmd_read_dark, 0, 0, 0, 0, bytes({4}), 1, "Receiving dark voltage..."},
        {cmd_scan_baseline, 0, 0, 0, 0, bytes({5}), 1, ""},
        {cmd_zero_here, 0, 0, 0, 0, bytes({8}), 1, ""},
        {cmd_spare_9, 0, 0, 0, 0, bytes({9}), 1, ""},
        {cmd_scan_bandwidth, 0, 0, 0, 0, bytes({12}), 1, "Measuring bandwidth..."},
        {cmd_read_gain, 0, 0, 0, 0, bytes({13}), 6, ""},
        // Unknown codes take a slot and send nothing; the tick then turns the receive event off.
        {0, 0, 0, 0, 0, {}, 0, ""},
        {14, 0, 0, 0, 0, {}, 0, ""},
        {68, 0, 0, 0, 0, {}, 0, ""},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(testing::Message() << "code " << r.code << " at " << r.lambda << "/" << r.start);
        shared.lambda_now = r.lambda;
        shared.scan_start_lambda = r.start;
        shared.scan_end_lambda = r.end;
        shared.scan_speed = static_cast<std::int16_t>(r.speed);
        pipe->written.clear();
        panels.clear();
        const int head = shared.ring_head;
        send_message(static_cast<std::uint8_t>(r.code));
        EXPECT_EQ(shared.ring_head, head + 1);
        EXPECT_EQ(panels[6], QString::fromLatin1(r.status));
        Timer1_Timer();
        EXPECT_EQ(pipe->written, r.wire);
        EXPECT_EQ(port->RThreshold, r.threshold);
    }
}

TEST_F(CommandRing, UnansweredExchangePingsTwentyTimesThenFallsSilentUntilAPingIsAnswered) {
    shared.lambda_now = 500;
    begin_exchange();
    send_message(cmd_goto_lambda);
    for (int i = 0; i < 25; ++i)
        Timer1_Timer();
    EXPECT_EQ(pipe->written, QByteArray(20, '\x78'));
    EXPECT_EQ(port->RThreshold, 6);

    reply({rsp_ping, 0, 0, 0, 0, 0});
    pipe->inject(bytes({68, 0, 1})); // late bytes of an earlier command, below the threshold
    shared.reading_index = 7;
    pipe->written.clear();
    Timer1_Timer();
    EXPECT_EQ(pipe->written, bytes({6, 1, 244}));
    EXPECT_EQ(port->InBufferCount(), 0) << "the input is emptied before each transmission";
    EXPECT_EQ(shared.reading_index, 0);
    EXPECT_EQ(port->RThreshold, 1);

    begin_exchange();
    EXPECT_EQ(shared.ping_count, 0) << "a new exchange restarts the count";
    Timer1_Timer();
    EXPECT_EQ(pipe->written, bytes({6, 1, 244, 120}));
}

TEST_F(CommandRing, ConnectGoesOutAtOnceAndATickWithNoReplyTurnsTheReceiveEventOff) {
    send_message(cmd_connect);
    EXPECT_EQ(pipe->written, bytes({1}));
    EXPECT_EQ(port->RThreshold, 1);
    EXPECT_EQ(panels[6], QStringLiteral("Connecting..."));
    EXPECT_EQ(shared.ring_head, 1) << "its slot is passed over, not filled";
    Timer1_Timer();
    EXPECT_EQ(port->RThreshold, 0);
    EXPECT_EQ(pipe->written, bytes({1}));
}
