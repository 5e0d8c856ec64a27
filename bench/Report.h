#ifndef DOVWRITER_BENCH_REPORT_H
#define DOVWRITER_BENCH_REPORT_H

// What the benchmark measured for one model size, and how it is printed:
// a table on the terminal and one CSV line per writer.

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "Model.h"
#include "Writers.h"

namespace bench {

struct SizeResult {
  ModelShape shape;
  LimitFigures limit;
  WriteFigures hdf5;
  std::vector<OursMode> modes;
  std::vector<WriteFigures> ours;  // one per mode
};

// The budget of peak memory for one of our writes, in bytes. Copied
// arrays: the host's arrays + 1.3 x the largest heavy block + 64 MiB. Lent
// arrays: the host's arrays (which the host holds in any case) + 0.05 x
// them + (threads + 1) x 1.5 x the block size + 64 MiB.
double MemoryBudget(const SizeResult& result, const OursMode& mode);

// The plain bytes of a fast block where the library chooses.
const std::uint32_t LibraryFastBlockBytes = 4u << 20;

void PrintTableHead(std::ostream& out);
void PrintSize(std::ostream& out, const SizeResult& result);
void PrintLegend(std::ostream& out);
void WriteCsv(const std::string& path, const std::vector<SizeResult>& results);

}  // namespace bench

#endif
