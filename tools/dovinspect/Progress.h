#ifndef DOVINSPECT_PROGRESS_H
#define DOVINSPECT_PROGRESS_H

// A progress line for long exports. It shows only on a terminal, and only
// once the work has taken more than a second, so that short runs, pipes and
// logs stay clean.

#include <chrono>
#include <ostream>

namespace DovInspect {

class ProgressLine {
 public:
  ProgressLine(std::ostream& out, bool enabled);
  ~ProgressLine();

  void Update(std::size_t done, std::size_t total);

 private:
  using Clock = std::chrono::steady_clock;
  std::ostream& out_;
  bool enabled_;
  bool shown_ = false;
  Clock::time_point start_;
  Clock::time_point last_;
};

// True if standard error is a terminal.
bool ErrorIsTerminal();

}  // namespace DovInspect

#endif
