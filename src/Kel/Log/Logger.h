#ifndef DOVWRITER_KEL_LOG_LOGGER_H
#define DOVWRITER_KEL_LOG_LOGGER_H

// The log pipeline: records pass a filter, a formatter turns them into text,
// a publisher writes the text. A route ties one of each together. Nothing is
// routed until a host asks for the trace file.

#include <DovWriter/LogRecord.h>

#include <cstdint>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Kel {
namespace Log {

using Kel::Util::LogRecord;

class Filter {
 public:
  typedef LogRecord argument_type;
  typedef bool result_type;
  virtual ~Filter() = default;
  virtual bool operator()(const LogRecord& record) = 0;
};

template <std::uint16_t N>
class LevelFilter : public Filter {
 public:
  bool operator()(const LogRecord& record) override { return record.level >= N; }
};

class Formatter {
 public:
  typedef LogRecord argument_type;
  typedef std::string result_type;
  virtual ~Formatter() = default;
  virtual std::string operator()(const LogRecord& record) = 0;
};

// "file name : line @ message\n", with the file name after the last slash
// or backslash of the record's path.
class DefaultFormatter : public Formatter {
 public:
  std::string operator()(const LogRecord& record) override;
};

class Publisher {
 public:
  virtual ~Publisher() = default;
  virtual void Publish(const char* text) = 0;
  virtual void Flush() = 0;
};

class FilePublisher : public Publisher {
 public:
  explicit FilePublisher(const char* path);
  void Publish(const char* text) override;
  void Flush() override;

 private:
  std::ofstream stream;
};

// Separate scenes may log from separate threads: the logger is made once,
// and every operation holds its lock, so that each record reaches each
// publisher whole, one after the other.
class Logger {
 public:
  // The process-wide logger, made by the first call.
  static Logger& Instance();
  // True once any route exists; lets callers skip building records that no
  // one would see. Does not create the logger.
  static bool HasRoutes();

  void Publish(const LogRecord& record);

  template <class F>
  void AddFilter(const std::string& name) {
    std::lock_guard<std::recursive_mutex> hold(lock);
    if (filterNames.count(name) != 0) return;
    filterNames[name] = filters.size();
    filters.emplace_back(new F());
  }
  template <class F>
  void AddFormatter(const std::string& name) {
    std::lock_guard<std::recursive_mutex> hold(lock);
    if (formatterNames.count(name) != 0) return;
    formatterNames[name] = formatters.size();
    formatters.emplace_back(new F());
  }
  void AddPublisher(const std::string& name, Publisher* publisher);
  void SetFilter(const std::string& publisherName, const std::string& filterName);
  bool HasPublisher(const std::string& name) const {
    std::lock_guard<std::recursive_mutex> hold(lock);
    return publisherNames.count(name) != 0;
  }
  // Held across steps that must not be interleaved with another thread's.
  std::recursive_mutex& Lock() { return lock; }

 private:
  Logger();

  mutable std::recursive_mutex lock;

  struct Route {
    std::uint64_t publisher;
    std::uint64_t filter;
    std::uint64_t formatter;
  };
  std::vector<Route> routes;
  std::vector<std::unique_ptr<Publisher>> publishers;
  std::vector<std::unique_ptr<Filter>> filters;
  std::vector<std::unique_ptr<Formatter>> formatters;
  std::map<std::string, std::uint64_t> publisherNames;
  std::map<std::string, std::uint64_t> filterNames;
  std::map<std::string, std::uint64_t> formatterNames;
};

// Sets up the trace file route (the work behind Kel::Dov::logTraceToFile).
void TraceToFile(const char* path);

}  // namespace Log
}  // namespace Kel

#endif
