#include "Kel/Log/Logger.h"

#include <atomic>

#include <DovWriter/Scene.h>

#include "Kel/Log/Log.h"
#include "Kel/Log/OrderedLog.h"

namespace Kel {
namespace Log {

namespace {
// Set once the first route exists; read without the lock on every log call.
std::atomic<bool> routed(false);
const char* const kDefaultName = "__Default__";
const char* const kTraceFilterName = "trace log";
const char* const kTracePublisherName = "log file";
}  // namespace

std::string DefaultFormatter::operator()(const LogRecord& record) {
  std::string path = record.file != nullptr ? record.file : "";
  std::string::size_type slash = path.find_last_of("/\\");
  std::string text = slash == std::string::npos ? path : path.substr(slash + 1);
  text += " : ";
  text += std::to_string(record.line);
  text += " @ ";
  text += record.message;
  text += '\n';
  return text;
}

FilePublisher::FilePublisher(const char* path) : stream(path, std::ios::out | std::ios::trunc) {}

void FilePublisher::Publish(const char* text) { stream << text; }

void FilePublisher::Flush() { stream.flush(); }

Logger& Logger::Instance() {
  // Made once, whichever thread comes first; never destroyed: records may be
  // published from destructors of static objects at process end.
  static Logger* const instance = new Logger();
  return *instance;
}

bool Logger::HasRoutes() { return routed.load(std::memory_order_acquire); }

Logger::Logger() {
  AddFilter<LevelFilter<2000>>(kDefaultName);
  AddFormatter<DefaultFormatter>(kDefaultName);
}

void Logger::Publish(const LogRecord& record) {
  std::lock_guard<std::recursive_mutex> hold(lock);
  for (const Route& route : routes) {
    if (!(*filters[route.filter])(record)) continue;
    std::string text = (*formatters[route.formatter])(record);
    publishers[route.publisher]->Publish(text.c_str());
    publishers[route.publisher]->Flush();
  }
}

void Logger::AddPublisher(const std::string& name, Publisher* publisher) {
  std::lock_guard<std::recursive_mutex> hold(lock);
  publisherNames[name] = publishers.size();
  publishers.emplace_back(publisher);
  routes.push_back(Route{publishers.size() - 1, filterNames[kDefaultName],
                         formatterNames[kDefaultName]});
  routed.store(true, std::memory_order_release);
}

void Logger::SetFilter(const std::string& publisherName, const std::string& filterName) {
  std::lock_guard<std::recursive_mutex> hold(lock);
  auto publisher = publisherNames.find(publisherName);
  auto filter = filterNames.find(filterName);
  if (publisher == publisherNames.end() || filter == filterNames.end()) return;
  for (Route& route : routes)
    if (route.publisher == publisher->second) route.filter = filter->second;
}

void TraceToFile(const char* path) {
  Logger& logger = Logger::Instance();
  // Two threads asking at once get one publisher, as one thread asking twice.
  std::lock_guard<std::recursive_mutex> hold(logger.Lock());
  logger.AddFilter<LevelFilter<1000>>(kTraceFilterName);
  if (!logger.HasPublisher(kTracePublisherName))
    logger.AddPublisher(kTracePublisherName, new FilePublisher(path));
  logger.SetFilter(kTracePublisherName, kTraceFilterName);
}

void Publish(const Kel::Util::LogRecord& record) {
  if (OrderedLog::Hold(record)) return;
  Logger::Instance().Publish(record);
}

bool Active() { return Logger::HasRoutes(); }

}  // namespace Log
}  // namespace Kel

namespace Kel {
namespace Dov {
void logTraceToFile(const char* const path) { Kel::Log::TraceToFile(path); }
}  // namespace Dov
}  // namespace Kel
