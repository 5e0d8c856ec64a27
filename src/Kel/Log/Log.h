#ifndef DOVWRITER_KEL_LOG_LOG_H
#define DOVWRITER_KEL_LOG_LOG_H

#include <DovWriter/LogRecord.h>

namespace Kel {
namespace Log {

// Sends a record down every route of the process-wide logger.
void Publish(const Kel::Util::LogRecord& record);
// True if a published record could reach anyone.
bool Active();

}  // namespace Log
}  // namespace Kel

// KEL_LOG(1000, "KelTmf::Index::FlushFrozen", "Writing buffer " << n << " to stream.")
// The record is only filled when some route could receive it.
#define KEL_LOG(level, method, parts)                                          \
  do {                                                                         \
    if (::Kel::Log::Active()) {                                                \
      ::Kel::Util::LogRecord kelLogRecord_((level), __FILE__, __LINE__, (method)); \
      kelLogRecord_ << parts;                                                  \
      ::Kel::Log::Publish(kelLogRecord_);                                      \
    }                                                                          \
  } while (0)

#endif
