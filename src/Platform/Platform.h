#ifndef DOVWRITER_PLATFORM_PLATFORM_H
#define DOVWRITER_PLATFORM_PLATFORM_H

// The few services the library needs from the operating system, in one
// place so that the rest of the code stays portable.

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace Platform {

// True if something exists at `path` (the existence test of _access).
bool FileExists(const char* path);

// Absolute 64-bit seek from the start of the file. Returns 0 on success.
int Seek64(std::FILE* stream, std::uint64_t offset);

// A hint that the `bytes` at `data`, a large buffer about to be filled, are
// best backed by large pages, which spares one fault per small page. Changes
// nothing but speed; ignored where the system has no such pages.
void AdviseLargeBuffer(void* data, std::uint64_t bytes);

// For a buffer that is about to be filled whole: the advice above for a
// large one; a smaller one gets its pages in one call into the kernel rather
// than one fault per page as the filling goes (on a virtual machine each
// fault is dear).
// Changes nothing but speed; ignored where the system cannot do it.
void PrepareBufferForFilling(void* data, std::uint64_t bytes);

// Reserves room for `count` elements that are about to be appended, the
// room prepared as above.
template <class T>
void ReserveForFilling(std::vector<T>& values, std::size_t count) {
  values.reserve(count);
  PrepareBufferForFilling(values.data(), static_cast<std::uint64_t>(count) * sizeof(T));
}

// Formats like snprintf into `buffer` of `size` bytes; the result is always
// terminated and cut to fit. Returns the number of bytes written.
int FormatText(char* buffer, std::size_t size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

// The computer's and the user's names, or empty if they cannot be had.
std::string ComputerName();
std::string UserName();

// Seconds since 1970.
std::int64_t Now();
// `time` in local time, through strftime with `format`; at most 119 bytes.
std::string LocalTimeText(const char* format, std::int64_t time);
// `time` as ctime() gives it, with its trailing line feed.
std::string CTimeText(std::int64_t time);

// A random generator with the classic 15-bit linear congruential rule, so
// that default colours are the same on every platform: state = state *
// 214013 + 2531011, result = (state >> 16) & 0x7FFF. Its state belongs to
// the calling thread.
void SeedRandom(std::uint32_t seed);
int Random();
const int RandomMax = 32767;

}  // namespace Platform

#endif
