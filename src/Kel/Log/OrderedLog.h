#ifndef DOVWRITER_KEL_LOG_ORDEREDLOG_H
#define DOVWRITER_KEL_LOG_ORDEREDLOG_H

// Keeps the log of one thread in the order of a sequential run while part
// of its work is finished later, out of line: a block handed to other
// threads is logged when it is written, yet its lines belong where it was
// handed over. Each piece of such work opens a mark; records published on
// the thread while a mark is open wait behind it, and go out once the marks
// in front of them are closed, right after the lines of the closing work.

#include <DovWriter/LogRecord.h>

#include <cstdint>
#include <deque>
#include <string>

namespace Kel {
namespace Log {

class OrderedLog {
 public:
  // Holds the records of the calling thread from now on (under any
  // ordered log that held them before).
  OrderedLog();
  // Publishes every record still waiting, marks left open or not, and
  // hands the thread back to the log it had before.
  ~OrderedLog();
  OrderedLog(const OrderedLog&) = delete;
  OrderedLog& operator=(const OrderedLog&) = delete;

  // The place of one piece of work that will log later.
  void OpenMark();
  // The work of the oldest mark logs now: its records go out at once, and
  // when it ends, those that waited behind it up to the next mark follow.
  class FirstMarkWork {
   public:
    explicit FirstMarkWork(OrderedLog& log);
    ~FirstMarkWork();
    FirstMarkWork(const FirstMarkWork&) = delete;
    FirstMarkWork& operator=(const FirstMarkWork&) = delete;

   private:
    OrderedLog& log;
  };

  // Used by the log itself: true if `record` was taken to wait.
  static bool Hold(const Kel::Util::LogRecord& record);

 private:
  // A record as it waits: its text and where it came from.
  struct Waiting {
    bool mark = false;
    std::uint16_t level = 0;
    std::string message;
    const char* file = nullptr;
    std::uint32_t line = 0;
    const char* method = nullptr;
    std::int64_t time = 0;
  };
  static void Publish(const Waiting& held);
  // Publishes the waiting records up to the next mark.
  void Release();

  std::deque<Waiting> waiting;  // behind the oldest open mark, which is first
  bool firstMarkLogging = false;
  OrderedLog* outer;
};

}  // namespace Log
}  // namespace Kel

#endif
