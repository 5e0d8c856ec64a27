#include "Measure.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <time.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>

namespace bench {

namespace {

double Clock(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return now.tv_sec + now.tv_nsec * 1e-9;
}

}  // namespace

double Stopwatch::WallNow() { return Clock(CLOCK_MONOTONIC); }
double Stopwatch::CpuNow() { return Clock(CLOCK_PROCESS_CPUTIME_ID); }

namespace {

// Processor seconds to fill `bytes` of fresh anonymous memory, which is
// advised onto large pages as the library's large copies are.
double SecondsToFill(std::uint64_t bytes) {
  void* memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::runtime_error("mmap failed");
#if defined(MADV_HUGEPAGE)
  madvise(memory, bytes, MADV_HUGEPAGE);
#endif
  const double start = Stopwatch::CpuNow();
  std::memset(memory, 1, bytes);
  const double seconds = Stopwatch::CpuNow() - start;
  munmap(memory, bytes);
  return seconds;
}

}  // namespace

MemoryTouchFigures MeasureMemoryTouch(std::uint64_t bytes) {
  const double gib = static_cast<double>(bytes) / (1u << 30);
  MemoryTouchFigures figures;
  figures.firstSecondsPerGiB = SecondsToFill(bytes) / gib;
  figures.againSecondsPerGiB = SecondsToFill(bytes) / gib;
  return figures;
}

std::uint64_t PeakRssBytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<std::uint64_t>(usage.ru_maxrss) * 1024;  // reported in KiB
}

std::uint64_t FileBytes(const std::string& path) {
  struct stat info {};
  if (stat(path.c_str(), &info) != 0) throw std::runtime_error("cannot stat " + path);
  return static_cast<std::uint64_t>(info.st_size);
}

namespace {

void WriteAll(int fd, const void* data, std::size_t size) {
  const char* bytes = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t done = write(fd, bytes, size);
    if (done <= 0) _exit(3);
    bytes += done;
    size -= static_cast<std::size_t>(done);
  }
}

bool ReadAll(int fd, void* data, std::size_t size) {
  char* bytes = static_cast<char*>(data);
  while (size > 0) {
    const ssize_t done = read(fd, bytes, size);
    if (done <= 0) return false;
    bytes += done;
    size -= static_cast<std::size_t>(done);
  }
  return true;
}

}  // namespace

void SettleFiles() { sync(); }

void RunInChild(void* record, std::size_t recordSize, const std::function<void(void*)>& work) {
  SettleFiles();
  int channel[2];
  if (pipe(channel) != 0) throw std::runtime_error("pipe failed");
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("fork failed");
  if (child == 0) {
    close(channel[0]);
    try {
      work(record);
    } catch (const std::exception& error) {
      std::fprintf(stderr, "child failed: %s\n", error.what());
      std::fflush(stderr);
      _exit(2);
    }
    WriteAll(channel[1], record, recordSize);
    close(channel[1]);
    std::fflush(nullptr);
    _exit(0);
  }
  close(channel[1]);
  const bool received = ReadAll(channel[0], record, recordSize);
  close(channel[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (!received || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
    throw std::runtime_error("a measurement child failed (status " + std::to_string(status) + ")");
}

}  // namespace bench
