#ifndef DOVWRITER_BENCH_WRITERS_H
#define DOVWRITER_BENCH_WRITERS_H

// The writers that the benchmark sets side by side, each handed the same
// arrays of a synthetic model one at a time.

#include <DovWriter/DovWriter.h>

#include <cstdint>
#include <string>

#include "Model.h"

namespace bench {

struct WriteFigures {
  // Library calls only, not the making of arrays.
  double wallSeconds = 0;
  double cpuSeconds = 0;
  // Of that, the calls that hand the arrays over (ours only): the copies
  // into memory the process never had, which cost most on a virtual machine.
  double handOverCpuSeconds = 0;
  std::uint64_t peakRssBytes = 0;  // of the whole process that wrote
  std::uint64_t fileBytes = 0;
};

class Stopwatch;
// The figures of a finished write: the watch's times, this process's peak
// memory and the size of the file at `path`.
WriteFigures FinishedWrite(const Stopwatch& watch, const std::string& path);

// How this library writes: threads, encoding, and whether the arrays are
// copied (setValues) or lent (lendValues).
struct OursMode {
  char name[16] = "";
  unsigned threads = 1;
  bool fast = false;
  bool lend = false;
  std::uint32_t blockBytes = 0;  // fast: 0 for the library's choice
};

// A mode by its parts; the block size counts for the fast encoding only.
OursMode MakeOursMode(const char* name, unsigned threads, bool fast, bool lend,
                      std::uint32_t blockBytes = 0);
Kel::Dov::WriteOptions WriteOptionsOf(const OursMode& mode);

// Through this library's public API, from the first setValues to the end of
// closeFile. A copied array is freed by the caller as soon as the library
// has taken it; a lent one is kept to the end.
WriteFigures WriteOurs(const ModelShape& shape, const std::string& path, const OursMode& mode);

struct Hdf5Options {
  std::uint64_t chunkBytes = 1 << 20;
};
// The same arrays as chunked datasets with the shuffle and deflate(6) filters.
WriteFigures WriteHdf5(const ModelShape& shape, const std::string& path,
                       const Hdf5Options& options);

struct LimitFigures {
  // compress2 level 6 alone, over all compressed blocks.
  double wallSeconds = 0;
  double cpuSeconds = 0;
  std::uint64_t plainBytes = 0;    // the bytes compressed
  std::uint64_t blocks = 0;
  std::uint64_t largestHeavyBlock = 0;  // plain length of the largest "Heavy Data" block
  bool sameBytes = false;          // every block equals what compress2 makes of it
};
// Reads a written file back and compresses the plain contents of each
// compressed block again, in the same cuts.
LimitFigures MeasureLimit(const std::string& path);

}  // namespace bench

#endif
