#ifndef DOVWRITER_BENCH_MEASURE_H
#define DOVWRITER_BENCH_MEASURE_H

// Clocks, memory figures and the child processes in which each write runs,
// so that one writer's peak memory is not mixed with another's.

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace bench {

// Adds up the wall time of the spans it is asked to time, so that the
// benchmark's own work between library calls (making the next array) is
// left out.
class Stopwatch {
 public:
  template <class Work>
  auto Time(Work&& work) -> decltype(work()) {
    const auto start = std::chrono::steady_clock::now();
    struct AddOnExit {
      Stopwatch* watch;
      std::chrono::steady_clock::time_point start;
      ~AddOnExit() {
        watch->seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start)
                              .count();
      }
    } add{this, start};
    return work();
  }
  double Seconds() const { return seconds; }

 private:
  double seconds = 0;
};

// The peak resident set of this process so far.
std::uint64_t PeakRssBytes();
std::uint64_t FileBytes(const std::string& path);

// Runs `work` in a forked child and hands back the plain record it filled.
// A child that fails prints why and the benchmark stops.
void RunInChild(void* record, std::size_t recordSize, const std::function<void(void*)>& work);

template <class Record>
Record InChild(const std::function<Record()>& work) {
  Record record{};
  RunInChild(&record, sizeof record, [&](void* out) { *static_cast<Record*>(out) = work(); });
  return record;
}

}  // namespace bench

#endif
