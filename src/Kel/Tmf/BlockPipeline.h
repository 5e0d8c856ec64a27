#ifndef DOVWRITER_KEL_TMF_BLOCKPIPELINE_H
#define DOVWRITER_KEL_TMF_BLOCKPIPELINE_H

// Blocks compressed by a pool of threads while the host goes on putting,
// and handed back strictly in the order in which they were given, on the
// host's thread, which writes them: a block lies right behind the block in
// front of it, so none can be placed before those in front are in the
// file.
//
// The host's thread is one of the threads: where it would otherwise wait
// (too many blocks in flight, or the end of the file) it compresses a
// waiting block itself, so `threads` = 1 starts no thread at all. While it
// has more to fill it leaves the last waiting block to the workers: a block
// it compresses holds up the filling of the next, and a worker that runs
// out of blocks meanwhile stands idle. At most `threads` blocks are in
// flight at once, beside the one the host fills; with workers and small
// fast blocks one more, since a fast block of noise is done ten times
// sooner than one of data and the workers would otherwise run dry while
// the host compresses a long one.
// Workers never throw: the first failure is kept, the work not yet begun
// is dropped, and the failure is thrown on the host's thread, as the same
// exception, by the next call the host makes. The destructor drops what is
// left and waits for every worker: no thread outlives the pipeline.

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "Kel/Log/OrderedLog.h"
#include "Kel/Tmf/BlockCoding.h"

namespace KelTmf {

// A block as it leaves the pipeline, ready to be written.
struct FinishedBlock {
  std::uint64_t number = 0;
  std::uint32_t plainLength = 0;
  bool compressed = false;
  const unsigned char* bytes = nullptr;  // plainLength bytes, or the stored form
  std::uint64_t size = 0;
};

class BlockPipeline {
 public:
  typedef std::function<void(const FinishedBlock& block)> Writer;

  // Records published on the constructing thread are kept in the order of
  // a sequential write until the blocks in front of them are written.
  BlockPipeline(unsigned threads, const BlockCoding& coding, Writer writer);
  ~BlockPipeline();
  BlockPipeline(const BlockPipeline&) = delete;
  BlockPipeline& operator=(const BlockPipeline&) = delete;

  // Takes the next block in file order: `length` plain bytes in `plain`,
  // compressed unless `compress` is false (then written as they are).
  // Writes what is ready, and waits, helping, while too many are in flight.
  void Submit(std::uint64_t number, Buffer plain, std::uint32_t length, bool compress);
  // Writes every block that is ready, in order, without waiting.
  void WriteReady();
  // Returns once every block given is written.
  void Drain();
  // Room for the plain bytes of a block: a buffer that served an earlier
  // block where one of at least `capacity` bytes is spare.
  Buffer TakeBuffer(std::uint64_t capacity);

 private:
  struct Task;
  // Drops the blocks not begun and waits for every worker.
  void Stop();
  void WorkerLoop();
  // Runs `task` on this thread; `lock` is held on entry and on return.
  void Run(Task& task, BlockCoder& coder, std::unique_lock<std::mutex>& lock);
  // Compresses a waiting block on the host's thread, or waits for the
  // oldest block to be done. `moreToFill`: the host fills more blocks
  // after this, and leaves the last waiting one to the workers.
  void HelpOrWait(bool moreToFill);
  // Throws the first failure on the host's thread; `lock` is held.
  void ThrowIfFailed();
  bool FrontDone() const;
  void KeepSpare(std::vector<Buffer>& spare, Buffer buffer);

  const unsigned threads;
  const BlockCoding coding;
  const std::size_t depth;  // blocks in flight, beside the one the host fills
  Writer writer;
  BlockCoder hostCoder;
  Kel::Log::OrderedLog log;

  std::mutex mutex;
  std::condition_variable workWaiting;  // for workers
  std::condition_variable taskDone;     // for the host
  std::deque<std::unique_ptr<Task>> inFlight;  // in file order
  std::deque<Task*> waiting;                   // not begun yet
  std::vector<Buffer> plainSpare;   // for the blocks the host fills
  std::vector<Buffer> storedSpare;  // for what compression makes
  std::exception_ptr failure;
  bool stopping = false;
  std::atomic<bool> cancelled{false};
  std::vector<std::thread> workers;
};

}  // namespace KelTmf

#endif
