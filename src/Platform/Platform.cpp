#include "Platform/Platform.h"

#include <cstdarg>
#include <ctime>

#if defined(_WIN32)
#include <io.h>
#include <windows.h>
#else
#include <pwd.h>
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace Platform {

namespace {

// Smaller buffers may share their pages with others, and advising part of a
// mapping would split it, which keeps the C library from growing the buffer
// in place; buffers this large always have a mapping of their own. Below
// it, large pages did not pay on a virtual machine: a large page that the
// host has never backed is dearer to clear than small pages that were
// freed a moment ago, while the saving in page tables only shows on arrays
// of tens of megabytes.
const std::uint64_t LargeBufferBytes = std::uint64_t(32) << 20;

// Below this, a buffer's few faults cost less than the call.
const std::uint64_t PopulateBytes = std::uint64_t(64) << 10;

}  // namespace

void PrepareBufferForFilling(void* data, std::uint64_t bytes) {
  AdviseLargeBuffer(data, bytes);
#if defined(__linux__)
  // Large pages already come one fault per 2 MiB, and populating them in
  // advance measured slower than letting them fault in.
  if (bytes >= LargeBufferBytes) return;
  // Not in every C library's headers yet; kernels before 5.14 refuse it,
  // which leaves the pages to fault in as usual.
  const int populateWrite = 23;  // MADV_POPULATE_WRITE
  if (data == nullptr || bytes < PopulateBytes) return;
  // Only whole pages inside the buffer: its first and last page may hold
  // the C library's bookkeeping or other allocations.
  const std::uintptr_t page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const std::uintptr_t first = (reinterpret_cast<std::uintptr_t>(data) + page - 1) & ~(page - 1);
  const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(data) + bytes) & ~(page - 1);
  if (end > first) madvise(reinterpret_cast<void*>(first), end - first, populateWrite);
#endif
}

void AdviseLargeBuffer(void* data, std::uint64_t bytes) {
#if defined(MADV_HUGEPAGE)
  if (data == nullptr || bytes < LargeBufferBytes) return;
  // The whole mapping, from the page that holds the first byte to the end
  // of the page that holds the last.
  const std::uintptr_t page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const std::uintptr_t first = reinterpret_cast<std::uintptr_t>(data) & ~(page - 1);
  const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(data) + bytes + page - 1) & ~(page - 1);
  madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
#else
  (void)data;
  (void)bytes;
#endif
}

bool FileExists(const char* path) {
#if defined(_WIN32)
  return _access(path, 0) == 0;
#else
  return access(path, F_OK) == 0;
#endif
}

int Seek64(std::FILE* stream, std::uint64_t offset) {
#if defined(_WIN32)
  return _fseeki64(stream, static_cast<__int64>(offset), SEEK_SET);
#else
  return fseeko(stream, static_cast<off_t>(offset), SEEK_SET);
#endif
}

int FormatText(char* buffer, std::size_t size, const char* format, ...) {
  if (size == 0) return 0;
  va_list args;
  va_start(args, format);
  int written = std::vsnprintf(buffer, size, format, args);
  va_end(args);
  if (written < 0) {
    buffer[0] = '\0';
    return 0;
  }
  if (static_cast<std::size_t>(written) >= size) written = static_cast<int>(size - 1);
  return written;
}

std::string ComputerName() {
#if defined(_WIN32)
  char name[80];
  DWORD size = sizeof name;
  return GetComputerNameA(name, &size) ? std::string(name, size) : std::string();
#else
  char name[80] = {0};
  if (gethostname(name, sizeof name - 1) != 0) return std::string();
  return std::string(name);
#endif
}

std::string UserName() {
#if defined(_WIN32)
  char name[80];
  DWORD size = sizeof name;
  return GetUserNameA(name, &size) ? std::string(name) : std::string();
#else
  struct passwd entry;
  struct passwd* result = nullptr;
  char buffer[1024];
  if (getpwuid_r(getuid(), &entry, buffer, sizeof buffer, &result) != 0 || result == nullptr)
    return std::string();
  return std::string(entry.pw_name).substr(0, 79);
#endif
}

std::int64_t Now() { return static_cast<std::int64_t>(std::time(nullptr)); }

std::string LocalTimeText(const char* format, std::int64_t time) {
  std::time_t t = static_cast<std::time_t>(time);
  std::tm parts;
#if defined(_WIN32)
  if (localtime_s(&parts, &t) != 0) return std::string();
#else
  if (localtime_r(&t, &parts) == nullptr) return std::string();
#endif
  char buffer[120];
  std::size_t n = std::strftime(buffer, sizeof buffer, format, &parts);
  return std::string(buffer, n);
}

std::string CTimeText(std::int64_t time) {
  std::time_t t = static_cast<std::time_t>(time);
  char buffer[64];
#if defined(_WIN32)
  if (ctime_s(buffer, sizeof buffer, &t) != 0) return std::string("\n");
#else
  if (ctime_r(&t, buffer) == nullptr) return std::string("\n");
#endif
  return std::string(buffer);
}

namespace {
// One state per thread, as the C runtime of some platforms keeps rand's:
// scenes built on separate threads draw their colours without meeting,
// and a single-threaded host sees one sequence shared by its scenes.
thread_local std::uint32_t randomState = 1;
}  // namespace

void SeedRandom(std::uint32_t seed) { randomState = seed; }

int Random() {
  randomState = randomState * 214013u + 2531011u;
  return static_cast<int>((randomState >> 16) & 0x7FFFu);
}

}  // namespace Platform
