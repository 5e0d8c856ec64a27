#ifndef DOVWRITER_BENCH_MEASURE_H
#define DOVWRITER_BENCH_MEASURE_H

// Clocks, memory figures and the child processes in which each write runs,
// so that one writer's peak memory is not mixed with another's.

#include <cstdint>
#include <functional>
#include <string>

namespace bench {

// Adds up the wall time and the processor time (user and system, of the
// whole process) of the spans it is asked to time, so that the benchmark's
// own work between library calls (making the next array) is left out. On a
// shared machine the processor time is the steadier of the two.
class Stopwatch {
 public:
  template <class Work>
  auto Time(Work&& work) -> decltype(work()) {
    struct AddOnExit {
      Stopwatch* watch;
      double wall = WallNow(), cpu = CpuNow();
      ~AddOnExit() {
        watch->wallSeconds += WallNow() - wall;
        watch->cpuSeconds += CpuNow() - cpu;
      }
    } add{this};
    return work();
  }
  double WallSeconds() const { return wallSeconds; }
  double CpuSeconds() const { return cpuSeconds; }
  static double WallNow();
  static double CpuNow();

 private:
  double wallSeconds = 0;
  double cpuSeconds = 0;
};

// What the machine charges for memory: processor seconds per GiB to write
// into pages this process never had, and into the same pages again once
// they were freed. The copies that setValues must make pay the first; on a
// virtual machine whose host backs guest memory only when it is touched,
// that is many times the second.
struct MemoryTouchFigures {
  double firstSecondsPerGiB = 0;
  double againSecondsPerGiB = 0;
};
MemoryTouchFigures MeasureMemoryTouch(std::uint64_t bytes);

// The peak resident set of this process so far.
std::uint64_t PeakRssBytes();
std::uint64_t FileBytes(const std::string& path);

// Writes to disk what earlier runs left in the page cache. Without it the
// kernel writes their files back (after 30 s, by default) while a later run
// is measured, and its threads take a share of the cores from that run: up
// to a tenth of a threaded write of 10^7 nodes on two cores. Every run
// starts from here, outside its clocks.
void SettleFiles();

// Runs `work` in a forked child, after SettleFiles, and hands back the
// plain record it filled. A child that fails prints why and the benchmark
// stops.
void RunInChild(void* record, std::size_t recordSize, const std::function<void(void*)>& work);

template <class Record>
Record InChild(const std::function<Record()>& work) {
  Record record{};
  RunInChild(&record, sizeof record, [&](void* out) { *static_cast<Record*>(out) = work(); });
  return record;
}

}  // namespace bench

#endif
