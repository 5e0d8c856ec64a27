#include "Kel/Tmf/BlockPipeline.h"

#include <algorithm>
#include <utility>

#include <DovWriter/Exception.h>

#include "Kel/Log/Log.h"
#include "Platform/Platform.h"

namespace KelTmf {

struct BlockPipeline::Task {
  std::uint64_t number = 0;
  Buffer plain;
  std::uint32_t length = 0;
  bool compress = false;
  Buffer stored;
  std::uint64_t storedSize = 0;
  bool done = false;
};

BlockPipeline::BlockPipeline(unsigned threads, const BlockCoding& coding, Writer writer)
    : threads(std::max(1u, threads)),
      coding(coding),
      depth(this->threads + (coding.fast && this->threads > 1 ? 1 : 0)),
      writer(std::move(writer)),
      hostCoder(coding) {
  try {
    for (unsigned i = 1; i < this->threads; ++i) workers.emplace_back([this] { WorkerLoop(); });
  } catch (...) {
    Stop();
    throw;
  }
}

BlockPipeline::~BlockPipeline() { Stop(); }

void BlockPipeline::Stop() {
  {
    std::lock_guard<std::mutex> lock(mutex);
    stopping = true;
    waiting.clear();
  }
  // A block being compressed is given up at its next slice.
  cancelled = true;
  workWaiting.notify_all();
  for (std::thread& worker : workers) worker.join();
  workers.clear();
}

void BlockPipeline::WorkerLoop() {
  BlockCoder coder(coding);
  std::unique_lock<std::mutex> lock(mutex);
  for (;;) {
    workWaiting.wait(lock, [this] { return stopping || !waiting.empty(); });
    if (stopping) return;
    Task* task = waiting.front();
    waiting.pop_front();
    Run(*task, coder, lock);
  }
}

void BlockPipeline::Run(Task& task, BlockCoder& coder, std::unique_lock<std::mutex>& lock) {
  // The stored form fills a buffer that served one before, where there is
  // one: fresh memory costs more to fill than memory used before. Stored
  // forms keep buffers of their own, which are touched only as far as
  // compression fills them.
  if (!storedSpare.empty()) {
    task.stored = std::move(storedSpare.back());
    storedSpare.pop_back();
  }
  lock.unlock();
  std::exception_ptr error;
  try {
    task.storedSize = coder.Code(task.plain.data(), task.length, task.stored, cancelled);
  } catch (...) {
    error = std::current_exception();
  }
  lock.lock();
  // The plain bytes have served; the next block may fill their buffer.
  KeepSpare(plainSpare, std::move(task.plain));
  task.done = true;
  if (error && !failure) {
    failure = error;
    waiting.clear();
    cancelled = true;
  }
  taskDone.notify_all();
}

void BlockPipeline::Submit(std::uint64_t number, Buffer plain, std::uint32_t length,
                           bool compress) {
  std::unique_ptr<Task> task(new Task);
  task->number = number;
  task->plain = std::move(plain);
  task->length = length;
  task->compress = compress;
  task->done = !compress;
  log.OpenMark();
  {
    std::lock_guard<std::mutex> lock(mutex);
    ThrowIfFailed();
    if (compress) waiting.push_back(task.get());
    inFlight.push_back(std::move(task));
  }
  if (compress) workWaiting.notify_one();
  WriteReady();
  while (inFlight.size() > depth) {
    HelpOrWait(true);
    WriteReady();
  }
}

bool BlockPipeline::FrontDone() const { return !inFlight.empty() && inFlight.front()->done; }

void BlockPipeline::WriteReady() {
  for (;;) {
    {
      std::lock_guard<std::mutex> lock(mutex);
      ThrowIfFailed();
      if (!FrontDone()) return;
    }
    // Only the host's thread takes blocks off the front, so the front
    // stays put while it is written without the lock.
    Task& task = *inFlight.front();
    FinishedBlock block;
    block.number = task.number;
    block.plainLength = task.length;
    block.compressed = task.compress;
    block.bytes = task.compress ? task.stored.data() : task.plain.data();
    block.size = task.compress ? task.storedSize : task.length;
    {
      Kel::Log::OrderedLog::FirstMarkWork turn(log);
      writer(block);
    }
    std::lock_guard<std::mutex> lock(mutex);
    KeepSpare(storedSpare, std::move(task.stored));
    inFlight.pop_front();
  }
}

void BlockPipeline::HelpOrWait(bool moreToFill) {
  std::unique_lock<std::mutex> lock(mutex);
  ThrowIfFailed();
  if (FrontDone()) return;
  if (waiting.size() > (moreToFill && threads > 1 ? 1u : 0u)) {
    Task* task = waiting.front();
    waiting.pop_front();
    Run(*task, hostCoder, lock);
  } else {
    taskDone.wait(lock, [this] { return failure || FrontDone(); });
  }
  ThrowIfFailed();
}

void BlockPipeline::Drain() {
  WriteReady();
  while (!inFlight.empty()) {
    HelpOrWait(false);
    WriteReady();
  }
}

void BlockPipeline::ThrowIfFailed() {
  if (!failure) return;
  try {
    std::rethrow_exception(failure);
  } catch (const Kel::Util::Exception& error) {
    // Logged here, on the host's thread, as the worker could not.
    KEL_LOG(2000, "KelTmf::BlockPipeline", error.GetDescription());
    throw;
  }
}

Buffer BlockPipeline::TakeBuffer(std::uint64_t capacity) {
  {
    std::lock_guard<std::mutex> lock(mutex);
    for (Buffer& buffer : plainSpare) {
      if (buffer.capacity() < capacity) continue;
      Buffer taken = std::move(buffer);
      std::swap(buffer, plainSpare.back());
      plainSpare.pop_back();
      return taken;
    }
  }
  Buffer fresh = Buffer::Allocate(capacity);
  Platform::AdviseLargeBuffer(fresh.data(), capacity);
  return fresh;
}

void BlockPipeline::KeepSpare(std::vector<Buffer>& spare, Buffer buffer) {
  // One for each block in flight; more would only hold memory that nothing
  // is going to fill.
  if (buffer.data() != nullptr && spare.size() < depth) spare.push_back(std::move(buffer));
}

}  // namespace KelTmf
