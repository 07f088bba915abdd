// The header queues shared by the back ends, driven directly: what the
// device side pulls, sample by sample, and when headers are marked done.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <numeric>
#include <vector>

#include "platform/WaveQueue.h"

namespace {

using namespace mm;
using backend::CaptureQueue;
using backend::PlayQueue;

// A 16-bit mono buffer whose samples say where they come from:
// base, base + 1, ... so a pulled stream can be read back.
struct Buffer {
    std::vector<std::int16_t> samples;
    WAVEHDR header;

    Buffer(std::int16_t base, std::size_t length, DWORD flags = 0, DWORD loops = 0)
        : samples(length)
    {
        std::iota(samples.begin(), samples.end(), base);
        header.lpData = reinterpret_cast<char*>(samples.data());
        header.dwBufferLength = static_cast<DWORD>(length * 2);
        header.dwFlags = WHDR_PREPARED | flags;
        header.dwLoops = loops;
    }
    bool done() const { return headerFlags(header) & WHDR_DONE; }
    bool queued() const { return headerFlags(header) & WHDR_INQUEUE; }
};

std::vector<std::int16_t> pull(PlayQueue& queue, std::size_t frames, std::size_t* fromHeaders = nullptr)
{
    std::vector<std::int16_t> out(frames, 12345);
    const std::size_t got = queue.pull(out.data(), frames);
    if (fromHeaders != nullptr) *fromHeaders = got;
    return out;
}

std::vector<std::int16_t> concat(std::initializer_list<std::vector<std::int16_t>> parts)
{
    std::vector<std::int16_t> all;
    for (const auto& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

// Pulls as a device that can replace what it holds does: `chunks` pulls of
// `frames` each, every one remembered as a point to go back to.
std::vector<std::int16_t> pullAhead(PlayQueue& queue, std::size_t chunks, std::size_t frames)
{
    std::vector<std::int16_t> all;
    for (std::size_t i = 0; i < chunks; ++i) {
        std::vector<std::int16_t> out(frames, 12345);
        queue.pullRewindable(out.data(), frames);
        all.insert(all.end(), out.begin(), out.end());
    }
    return all;
}

std::vector<std::int16_t> slice(const std::vector<std::int16_t>& all, std::size_t from, std::size_t count)
{
    return {all.begin() + from, all.begin() + from + count};
}

class PlayQueueTest : public ::testing::Test {
protected:
    PlayQueue queue{pcmFormat(44100, 16, 1)};
};

TEST_F(PlayQueueTest, HeadersFollowEachOtherAndAreDoneOnceTheirLastFrameIsTaken)
{
    Buffer a(100, 10);
    Buffer b(200, 5);
    queue.write(&a.header);
    queue.write(&b.header);
    EXPECT_TRUE(a.queued());
    EXPECT_FALSE(a.done());

    std::size_t got = 0;
    const auto first = pull(queue, 9, &got);
    EXPECT_EQ(got, 9u);
    EXPECT_FALSE(a.done()) << "one frame of the header is still to go";
    const auto rest = pull(queue, 10, &got);
    EXPECT_EQ(got, 6u);
    EXPECT_TRUE(a.done());
    EXPECT_FALSE(a.queued());
    EXPECT_TRUE(b.done());
    EXPECT_TRUE(queue.empty());

    const auto played = concat({first, rest});
    const auto expected = concat({a.samples, b.samples, std::vector<std::int16_t>(4, 0)});
    EXPECT_EQ(played, expected) << "back to back, then silence";
}

TEST_F(PlayQueueTest, LoopsPlayTheirCountThenTheNextHeaderAndAreDoneAfterTheLastPass)
{
    Buffer loop(100, 7, WHDR_BEGINLOOP | WHDR_ENDLOOP, 3);
    Buffer after(500, 3);
    queue.write(&loop.header);
    queue.write(&after.header);

    const auto most = pull(queue, 7 * 3 - 1);
    EXPECT_FALSE(loop.done()) << "one frame of the last pass is still to go";
    const auto rest = pull(queue, 1 + 3 + 2);
    EXPECT_EQ(concat({most, rest}),
              concat({loop.samples, loop.samples, loop.samples, after.samples, {0, 0}}));
    EXPECT_TRUE(loop.done());
    EXPECT_TRUE(after.done());
}

TEST_F(PlayQueueTest, LoopBlockSpansHeadersFromBeginToEnd)
{
    Buffer first(100, 3, WHDR_BEGINLOOP, 2);
    Buffer second(200, 2, WHDR_ENDLOOP);
    Buffer third(300, 2);
    queue.write(&first.header);
    queue.write(&second.header);
    queue.write(&third.header);

    const auto played = pull(queue, 2 * 5 + 2);
    EXPECT_EQ(played, concat({first.samples, second.samples, first.samples, second.samples,
                              third.samples}));
}

TEST_F(PlayQueueTest, ZeroAndOneLoopsPlayOnce)
{
    Buffer zero(100, 3, WHDR_BEGINLOOP | WHDR_ENDLOOP, 0);
    Buffer one(200, 3, WHDR_BEGINLOOP | WHDR_ENDLOOP, 1);
    queue.write(&zero.header);
    queue.write(&one.header);
    EXPECT_EQ(pull(queue, 7), concat({zero.samples, one.samples, {0}}));
}

TEST_F(PlayQueueTest, BreakLoopFinishesThePassUnderWayThenTheNextHeaderFollows)
{
    Buffer playing(100, 10, WHDR_BEGINLOOP | WHDR_ENDLOOP, 2000000000);
    Buffer next(1000, 6);
    queue.write(&playing.header);
    const auto before = pull(queue, 10 + 4);  // into the second pass
    queue.breakLoop();
    queue.write(&next.header);
    EXPECT_FALSE(playing.done());

    const auto after = pull(queue, 6 + 6);
    EXPECT_EQ(concat({before, after}),
              concat({playing.samples, playing.samples, next.samples}))
        << "the pass ends whole and the next header starts on the following sample";
    EXPECT_TRUE(playing.done());
}

TEST_F(PlayQueueTest, BreakLoopBeforeTheNextHeaderArrivesLeavesSilenceUntilItDoes)
{
    Buffer playing(100, 4, WHDR_BEGINLOOP | WHDR_ENDLOOP, 2000000000);
    queue.write(&playing.header);
    pull(queue, 2);
    queue.breakLoop();
    const auto tail = pull(queue, 5);
    EXPECT_EQ(tail, (std::vector<std::int16_t>{102, 103, 0, 0, 0}));
    EXPECT_TRUE(playing.done());

    Buffer next(1000, 2);
    queue.write(&next.header);
    EXPECT_EQ(pull(queue, 2), next.samples);
}

TEST_F(PlayQueueTest, BreakLoopWithNothingLoopingDoesNotCutALaterLoop)
{
    Buffer plain(100, 2);
    queue.write(&plain.header);
    queue.breakLoop();
    Buffer loop(200, 2, WHDR_BEGINLOOP | WHDR_ENDLOOP, 3);
    queue.write(&loop.header);
    EXPECT_EQ(pull(queue, 2 + 6), concat({plain.samples, loop.samples, loop.samples, loop.samples}));
}

TEST_F(PlayQueueTest, ResetStopsAtOnceAndMarksEveryQueuedHeaderDone)
{
    Buffer playing(100, 10, WHDR_BEGINLOOP | WHDR_ENDLOOP, 2000000000);
    Buffer waiting(200, 10);
    queue.write(&playing.header);
    queue.write(&waiting.header);
    pull(queue, 3);
    queue.reset();
    EXPECT_TRUE(playing.done());
    EXPECT_TRUE(waiting.done());
    EXPECT_FALSE(playing.queued());
    EXPECT_TRUE(queue.empty());
    std::size_t got = 1;
    EXPECT_EQ(pull(queue, 4, &got), std::vector<std::int16_t>(4, 0));
    EXPECT_EQ(got, 0u);

    Buffer fresh(300, 2);
    queue.write(&fresh.header);
    EXPECT_EQ(pull(queue, 2), fresh.samples) << "a header written after a reset starts at once";
}

TEST_F(PlayQueueTest, WriteClearsAnOldDoneFlag)
{
    Buffer a(100, 2);
    queue.write(&a.header);
    pull(queue, 2);
    ASSERT_TRUE(a.done());
    queue.write(&a.header);
    EXPECT_FALSE(a.done());
    EXPECT_TRUE(a.queued());
}

TEST_F(PlayQueueTest, EmptyLoopBlockEndsInsteadOfSpinning)
{
    Buffer empty(100, 0, WHDR_BEGINLOOP | WHDR_ENDLOOP, 2000000000);
    Buffer after(200, 2);
    queue.write(&empty.header);
    queue.write(&after.header);
    EXPECT_EQ(pull(queue, 2), after.samples);
    EXPECT_TRUE(empty.done());
}

// ------------------------------------------------------------------ rewind

TEST_F(PlayQueueTest, RewindIntoALoopFinishesThatPassThenPlaysWhatWasWrittenSince)
{
    Buffer loop(100, 10, WHDR_BEGINLOOP | WHDR_ENDLOOP, 2000000000);
    queue.write(&loop.header);
    const auto ahead = pullAhead(queue, 6, 4);  // pulls begin at 0, 4, ..., 20; third pass under way
    ASSERT_EQ(ahead, concat({loop.samples, loop.samples, slice(loop.samples, 0, 4)}));

    Buffer next(200, 5);
    queue.write(&next.header);
    queue.breakLoop();
    EXPECT_EQ(queue.rewind(13), 16u) << "the first pull that began at or after 13";
    EXPECT_EQ(queue.pulledFrames(), 16u);
    EXPECT_FALSE(loop.done());

    const auto passEnd = pull(queue, 3);
    EXPECT_EQ(passEnd, slice(ahead, 16, 3)) << "the second pass goes on where it was";
    EXPECT_FALSE(loop.done()) << "one frame of the pass is still to go";
    const auto rest = pull(queue, 1 + 5 + 2);
    EXPECT_EQ(concat({passEnd, rest}), concat({slice(loop.samples, 6, 4), next.samples, {0, 0}}))
        << "the break ends the pass the rewind went back into; the next header follows at once";
    EXPECT_TRUE(loop.done());
    EXPECT_TRUE(next.done());
}

TEST_F(PlayQueueTest, RewindNeverGoesBackPastAHeaderMarkedDone)
{
    Buffer first(100, 6);
    Buffer second(200, 10);
    queue.write(&first.header);
    queue.write(&second.header);
    pullAhead(queue, 2, 4);  // the second pull ends the first header
    ASSERT_TRUE(first.done());

    EXPECT_EQ(queue.rewind(2), 8u);
    EXPECT_EQ(queue.rewind(5), 8u);
    EXPECT_EQ(queue.pulledFrames(), 8u);
    EXPECT_EQ(pull(queue, 4), slice(second.samples, 2, 4)) << "the stream goes on unchanged";
}

TEST_F(PlayQueueTest, AfterAResetTheNextHeaderStartsExactlyWhereTheRewindGoes)
{
    Buffer old(100, 20);
    queue.write(&old.header);
    pullAhead(queue, 3, 4);
    queue.reset();
    Buffer fresh(200, 5, WHDR_BEGINLOOP | WHDR_ENDLOOP, 2000000000);
    queue.write(&fresh.header);
    queue.breakLoop();
    Buffer after(300, 2);
    queue.write(&after.header);

    EXPECT_EQ(queue.rewind(6), 6u) << "not a pull's start: any position may start afresh";
    EXPECT_EQ(pull(queue, 8), concat({fresh.samples, after.samples, {0}}))
        << "the loop starts at 6 and, broken before it began, plays a single pass";
    EXPECT_TRUE(fresh.done());
    EXPECT_EQ(queue.pulledFrames(), 14u);
}

TEST_F(PlayQueueTest, RewindToSilenceRestartsTheHeaderWrittenSinceAsAWriteIntoAnEmptyQueueDoes)
{
    pullAhead(queue, 2, 4);  // silence, pulls begin at 0 and 4
    Buffer loop(100, 3, WHDR_BEGINLOOP | WHDR_ENDLOOP, 2000000000);
    queue.write(&loop.header);
    pullAhead(queue, 2, 4);
    Buffer next(200, 2);
    queue.write(&next.header);
    queue.breakLoop();

    EXPECT_EQ(queue.rewind(2), 4u);
    EXPECT_EQ(pull(queue, 8), concat({loop.samples, next.samples, {0, 0, 0}}))
        << "the loop starts at 4 and, broken, plays a single pass";
    EXPECT_TRUE(loop.done());
}

TEST_F(PlayQueueTest, RewindReadsAHeaderRewrittenMeanwhileFromTheSameOffset)
{
    Buffer header(100, 12);
    queue.write(&header.header);
    pullAhead(queue, 2, 4);
    queue.holdOff([&] {
        std::iota(header.samples.begin(), header.samples.end(), std::int16_t{500});
        header.header.dwBufferLength = 10 * 2;
    });

    EXPECT_EQ(queue.rewind(3), 4u);
    EXPECT_EQ(pull(queue, 8), (std::vector<std::int16_t>{504, 505, 506, 507, 508, 509, 0, 0}));
    EXPECT_TRUE(header.done()) << "its new, shorter length has been read to the end";
}

TEST_F(PlayQueueTest, SettleDropsThePointsBeforeThePlayedPosition)
{
    Buffer header(100, 20);
    queue.write(&header.header);
    pullAhead(queue, 4, 4);  // pulls begin at 0, 4, 8 and 12
    queue.settle(6);

    EXPECT_EQ(queue.rewind(1), 8u) << "the first pull that began at or after the played position";
    EXPECT_EQ(pull(queue, 4), slice(header.samples, 8, 4));
}

TEST(PlayQueueFormats, EightBitAndStereoBecomeSixteenBitMono)
{
    PlayQueue eight(pcmFormat(11025, 8, 1));
    std::vector<unsigned char> bytes = {128, 255, 0, 192};
    WAVEHDR header;
    header.lpData = reinterpret_cast<char*>(bytes.data());
    header.dwBufferLength = 4;
    eight.write(&header);
    std::vector<std::int16_t> out(4);
    eight.pull(out.data(), 4);
    EXPECT_EQ(out, (std::vector<std::int16_t>{0, 127 * 256, -128 * 256, 64 * 256}));

    PlayQueue stereo(pcmFormat(44100, 16, 2));
    std::vector<std::int16_t> frames = {1000, 3000, -200, -400, 7, 7};
    WAVEHDR pair;
    pair.lpData = reinterpret_cast<char*>(frames.data());
    pair.dwBufferLength = 11;  // a trailing partial frame is not played
    stereo.write(&pair);
    std::vector<std::int16_t> mono(3);
    EXPECT_EQ(stereo.pull(mono.data(), 3), 2u);
    EXPECT_EQ(mono, (std::vector<std::int16_t>{2000, -300, 0}));
}

// ----------------------------------------------------------------- capture

struct Record {
    std::vector<char> bytes;
    WAVEHDR header;

    explicit Record(std::size_t size) : bytes(size, 0x55)
    {
        header.lpData = bytes.data();
        header.dwBufferLength = static_cast<DWORD>(size);
        header.dwFlags = WHDR_PREPARED;
    }
    bool done() const { return headerFlags(header) & WHDR_DONE; }
    DWORD recorded() const { return headerBytesRecorded(header); }
    std::int16_t sample(std::size_t i) const
    {
        std::int16_t value;
        std::memcpy(&value, bytes.data() + 2 * i, 2);
        return value;
    }
};

TEST(CaptureQueue, FillsBuffersInOrderCountingBytesAndMarksFullOnesDone)
{
    CaptureQueue queue(pcmFormat(44100, 16, 1));
    Record first(8);
    Record second(8);
    queue.add(&first.header);
    queue.add(&second.header);
    const std::int16_t samples[] = {1, 2, 3, 4, 5, 6, 7};

    queue.push(samples, 3);
    EXPECT_EQ(first.recorded(), 0u) << "nothing is recorded before the start";

    queue.start();
    queue.push(samples, 3);
    EXPECT_EQ(first.recorded(), 6u);
    EXPECT_FALSE(first.done());
    queue.push(samples + 3, 4);
    EXPECT_TRUE(first.done());
    EXPECT_EQ(first.recorded(), 8u);
    EXPECT_EQ(second.recorded(), 6u);
    EXPECT_EQ(first.sample(3), 4);
    EXPECT_EQ(second.sample(0), 5);
}

TEST(CaptureQueue, StopMarksAPartlyFilledBufferDoneAndKeepsEmptyOnes)
{
    CaptureQueue queue(pcmFormat(44100, 16, 1));
    Record partly(8);
    Record empty(8);
    queue.add(&partly.header);
    queue.add(&empty.header);
    queue.start();
    const std::int16_t samples[] = {9, 9};
    queue.push(samples, 2);
    queue.stop();
    EXPECT_TRUE(partly.done());
    EXPECT_EQ(partly.recorded(), 4u);
    EXPECT_FALSE(empty.done());
    EXPECT_TRUE(queue.holds(&empty.header));

    queue.push(samples, 2);
    EXPECT_EQ(empty.recorded(), 0u) << "stopped: samples are dropped";

    queue.reset();
    EXPECT_TRUE(empty.done());
    EXPECT_TRUE(queue.empty());
}

TEST(CaptureQueue, EightBitRecordsOneUnsignedBytePerSample)
{
    CaptureQueue queue(pcmFormat(22050, 8, 1));
    Record record(4);
    queue.add(&record.header);
    queue.start();
    const std::int16_t samples[] = {0, 32767, -32768, -256};
    queue.push(samples, 4);
    EXPECT_TRUE(record.done());
    const auto* bytes = reinterpret_cast<const unsigned char*>(record.bytes.data());
    EXPECT_EQ(std::vector<int>(bytes, bytes + 4), (std::vector<int>{128, 255, 0, 127}));
}

}  // namespace
