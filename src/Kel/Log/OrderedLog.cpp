#include "Kel/Log/OrderedLog.h"

#include "Kel/Log/Logger.h"

namespace Kel {
namespace Log {

namespace {
thread_local OrderedLog* current = nullptr;
}  // namespace

OrderedLog::OrderedLog() : outer(current) { current = this; }

OrderedLog::~OrderedLog() {
  current = outer;
  // Work that never logged leaves its mark behind; the records waiting for
  // it are published all the same, so that none is lost.
  for (const Waiting& held : waiting)
    if (!held.mark) Publish(held);
}

void OrderedLog::OpenMark() {
  Waiting mark;
  mark.mark = true;
  waiting.push_back(mark);
}

bool OrderedLog::Hold(const Kel::Util::LogRecord& record) {
  OrderedLog* log = current;
  if (log == nullptr || log->waiting.empty() || log->firstMarkLogging) return false;
  Waiting held;
  held.level = record.level;
  held.message = record.message;
  held.file = record.file;
  held.line = record.line;
  held.method = record.method;
  held.time = record.time;
  log->waiting.push_back(std::move(held));
  return true;
}

void OrderedLog::Publish(const Waiting& held) {
  Kel::Util::LogRecord record(held.level, held.file, held.line, held.method);
  record.time = held.time;
  record << held.message;
  Logger::Instance().Publish(record);
}

void OrderedLog::Release() {
  while (!waiting.empty() && !waiting.front().mark) {
    Publish(waiting.front());
    waiting.pop_front();
  }
}

OrderedLog::FirstMarkWork::FirstMarkWork(OrderedLog& log) : log(log) {
  log.firstMarkLogging = true;
}

OrderedLog::FirstMarkWork::~FirstMarkWork() {
  log.firstMarkLogging = false;
  if (!log.waiting.empty()) log.waiting.pop_front();
  log.Release();
}

}  // namespace Log
}  // namespace Kel
