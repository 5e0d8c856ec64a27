#include "Report.h"

#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace bench {

namespace {

const double MiB = 1024.0 * 1024.0;

double Ratio(double a, double b) { return b > 0 ? a / b : 0; }

std::uint64_t BlockBytes(const SizeResult& result, const OursMode& mode) {
  if (!mode.fast) return result.limit.largestHeavyBlock;
  return mode.blockBytes != 0 ? mode.blockBytes : LibraryFastBlockBytes;
}

// The first mode, exact on one thread, is the file every other compares to.
const WriteFigures& Reference(const SizeResult& result) { return result.ours.front(); }

void PrintLine(std::ostream& out, const char* text) { out << text << '\n'; }

}  // namespace

double MemoryBudget(const SizeResult& result, const OursMode& mode) {
  const double host = static_cast<double>(result.shape.HostBytes());
  const double block = static_cast<double>(BlockBytes(result, mode));
  if (!mode.lend) return host + 1.3 * result.limit.largestHeavyBlock + 64 * MiB;
  return host + 0.05 * host + (mode.threads + 1) * 1.5 * block + 64 * MiB;
}

void PrintTableHead(std::ostream& out) {
  char line[300];
  std::snprintf(line, sizeof line, "%-10s %-14s %3s %8s %8s %7s %7s %7s %8s %6s %8s %8s %8s %4s",
                "nodes", "writer", "thr", "wall s", "cpu s", "MB/s", "xHDF5", "xtoday",
                "file MiB", "size", "peak MiB", "lib MiB", "budget", "mem");
  PrintLine(out, line);
  out.flush();
}

void PrintSize(std::ostream& out, const SizeResult& r) {
  char line[300];
  const double input = r.shape.HostBytes() / 1e6;
  const WriteFigures& today = Reference(r);
  std::snprintf(line, sizeof line, "%-10llu %-14s %3d %8.2f %8.2f %7.1f %7s %7.2f %8.1f %6.3f",
                static_cast<unsigned long long>(r.shape.nodes), "hdf5", 1, r.hdf5.wallSeconds,
                r.hdf5.cpuSeconds, Ratio(input, r.hdf5.wallSeconds), "1.00",
                Ratio(today.wallSeconds, r.hdf5.wallSeconds), r.hdf5.fileBytes / MiB,
                Ratio(r.hdf5.fileBytes, today.fileBytes));
  PrintLine(out, line);
  std::snprintf(line, sizeof line, "%-10s %-14s %3d %8.2f %8.2f %7.1f %7.2f %7.2f   (%s)", "",
                "zlib alone", 1, r.limit.wallSeconds, r.limit.cpuSeconds,
                Ratio(input, r.limit.wallSeconds), Ratio(r.hdf5.wallSeconds, r.limit.wallSeconds),
                Ratio(today.wallSeconds, r.limit.wallSeconds),
                r.limit.sameBytes ? "exact x1 blocks are compress2's" : "BLOCKS DIFFER");
  PrintLine(out, line);
  for (std::size_t m = 0; m < r.modes.size(); ++m) {
    const OursMode& mode = r.modes[m];
    const WriteFigures& f = r.ours[m];
    const double budget = MemoryBudget(r, mode);
    const double beyondHost = mode.lend ? f.peakRssBytes - double(r.shape.HostBytes()) : f.peakRssBytes;
    std::snprintf(line, sizeof line,
                  "%-10s %-14s %3u %8.2f %8.2f %7.1f %7.2f %7.2f %8.1f %6.3f %8.1f %8.1f %8.1f %4s",
                  "", mode.name, mode.threads, f.wallSeconds, f.cpuSeconds,
                  Ratio(input, f.wallSeconds), Ratio(r.hdf5.wallSeconds, f.wallSeconds),
                  Ratio(today.wallSeconds, f.wallSeconds), f.fileBytes / MiB,
                  Ratio(f.fileBytes, today.fileBytes), f.peakRssBytes / MiB, beyondHost / MiB,
                  (budget - (mode.lend ? r.shape.HostBytes() : 0)) / MiB,
                  f.peakRssBytes <= budget ? "ok" : "OVER");
    PrintLine(out, line);
  }
  out.flush();
}

void PrintLegend(std::ostream& out) {
  out << "wall, cpu: library calls from the first array handed over to the end of closeFile "
         "(cpu: all threads of the process); MB/s: host array bytes per wall second; xHDF5, "
         "xtoday: wall time of HDF5 and of exact x1 with copied arrays over this row's; size: "
         "file over the exact x1 file; lib MiB: peak resident memory, beyond the host's "
         "arrays where they are lent; budget: the same for the limit (copied: host arrays + "
         "1.3 x largest heavy block + 64 MiB; lent: 0.05 x host arrays + (threads + 1) x 1.5 x "
         "block + 64 MiB); zlib alone: compress2 level 6 on the exact x1 file's blocks, one "
         "core\n";
}

void WriteCsv(const std::string& path, const std::vector<SizeResult>& results) {
  std::ofstream csv(path);
  csv << "nodes,cells,input_bytes,writer,threads,lend,block_bytes,wall_s,cpu_s,file_bytes,"
         "peak_rss_bytes,memory_budget_bytes,hdf5_wall_s,today_wall_s,same_zlib_bytes\n";
  for (const SizeResult& r : results) {
    auto row = [&](const std::string& writer, unsigned threads, bool lend, std::uint64_t block,
                   const WriteFigures& f, double budget) {
      csv << r.shape.nodes << ',' << r.shape.cells << ',' << r.shape.HostBytes() << ',' << writer
          << ',' << threads << ',' << (lend ? 1 : 0) << ',' << block << ',' << f.wallSeconds
          << ',' << f.cpuSeconds << ',' << f.fileBytes << ',' << f.peakRssBytes << ','
          << static_cast<std::uint64_t>(budget) << ',' << r.hdf5.wallSeconds << ','
          << Reference(r).wallSeconds << ',' << (r.limit.sameBytes ? 1 : 0) << '\n';
    };
    row("hdf5", 1, false, 0, r.hdf5, 0);
    WriteFigures limit;
    limit.wallSeconds = r.limit.wallSeconds;
    limit.cpuSeconds = r.limit.cpuSeconds;
    row("zlib alone", 1, false, r.limit.largestHeavyBlock, limit, 0);
    for (std::size_t m = 0; m < r.modes.size(); ++m)
      row(r.modes[m].name, r.modes[m].threads, r.modes[m].lend, BlockBytes(r, r.modes[m]),
          r.ours[m], MemoryBudget(r, r.modes[m]));
  }
  if (!csv) throw std::runtime_error("cannot write " + path);
}

}  // namespace bench
