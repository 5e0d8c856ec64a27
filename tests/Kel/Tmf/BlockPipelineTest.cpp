// The pipeline that compresses blocks on threads: blocks come back in the
// order given, on the caller's thread, in the stored form of a compressed
// block; buffers serve again; a worker's failure reaches the caller.

#include <gtest/gtest.h>

#include <cstring>
#include <thread>

#include "Kel/Tmf/BlockPipeline.h"
#include "TmfTestSupport.h"

using KelTmf::BlockCoding;
using KelTmf::BlockPipeline;
using KelTmf::Buffer;
using KelTmf::FinishedBlock;
using TmfTest::Bytes;
using TmfTest::Inflated;

namespace {

struct Written {
  std::uint64_t number;
  Bytes bytes;
  bool onCallersThread;
};

KelTmf::Buffer Filled(const Bytes& plain) {
  Buffer buffer = Buffer::Allocate(plain.size() + 1);
  std::memcpy(buffer.data(), plain.data(), plain.size());
  return buffer;
}

}  // namespace

TEST(PipelineThreads, BlocksComeBackInOrderOnTheCallersThreadAndBuffersServeAgain) {
  const std::thread::id caller = std::this_thread::get_id();
  for (bool fast : {false, true}) {
    std::vector<Written> written;
    BlockPipeline pipeline(3, BlockCoding{fast, 6}, [&](const FinishedBlock& block) {
      written.push_back({block.number, Bytes(block.bytes, block.bytes + block.size),
                         std::this_thread::get_id() == caller});
    });
    std::vector<Bytes> plains;
    for (std::uint64_t number = 0; number < 12; ++number) {
      plains.push_back(TmfTest::Pattern(3000 + 7919 * number, 5 + number));
      // Block 5 goes to the file as it is.
      pipeline.Submit(number, Filled(plains.back()), plains.back().size(), number != 5);
    }
    pipeline.Drain();
    ASSERT_EQ(written.size(), 12u);
    for (std::uint64_t number = 0; number < 12; ++number) {
      SCOPED_TRACE(number);
      EXPECT_EQ(written[number].number, number);
      EXPECT_TRUE(written[number].onCallersThread);
      EXPECT_EQ(number == 5 ? written[number].bytes : Inflated(written[number].bytes),
                plains[number]);
    }
  }
  // With the host's thread alone, a block is compressed when the next one
  // comes: its plain buffer then serves the block after.
  BlockPipeline pipeline(1, BlockCoding{true, 6}, [](const FinishedBlock&) {});
  const Bytes plain = TmfTest::Pattern(3000, 5);
  Buffer first = Filled(plain);
  const unsigned char* firstBuffer = first.data();
  pipeline.Submit(0, std::move(first), plain.size(), true);
  pipeline.Submit(1, Filled(plain), plain.size(), true);
  EXPECT_EQ(pipeline.TakeBuffer(plain.size()).data(), firstBuffer);
}

TEST(PipelineThreads, AWorkersFailureIsThrownOnTheCallersThreadAndStopsTheRest) {
  // No encoder exists for level 13: every block fails with code 0.
  int writes = 0;
  BlockPipeline pipeline(2, BlockCoding{true, 13}, [&](const FinishedBlock&) { ++writes; });
  TmfTest::ExpectFailure(
      [&] {
        for (std::uint64_t number = 0; number < 50; ++number)
          pipeline.Submit(number, Filled(Bytes(100, 1)), 100, true);
        pipeline.Drain();
      },
      0, "Memory Allocation Error");
  EXPECT_EQ(writes, 0);
}
