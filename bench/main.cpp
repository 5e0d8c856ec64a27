// dovbench: writes synthetic models of growing size with this library, in
// each of its modes, and in the same run with HDF5, and sets them against
// what zlib alone needs.
//
//   dovbench [--quick] [--max-nodes N] [--sizes N,N,...] [--cells hex|tet]
//            [--threads N] [--block-bytes B] [--modes LIST] [--dir DIR]
//            [--csv FILE] [--hdf5-chunk-kib K] [--keep] [--ours-only]
//            [--repeat N]
//
// Our modes (--modes, comma-separated; all by default): exact1copy (exact
// blocks on one thread, arrays copied by setValues: the sequential write),
// exact1, exactN, fast1, fastN (arrays lent by lendValues; N = --threads,
// the machine's hardware threads by default).
//
// Each size is measured N times (3 by default), the writers taking turns,
// and each writer's fastest run (by wall time) counts: on a shared machine
// the slowest runs measure the neighbours. Small models get more runs, so
// that each writer is measured for some seconds.
//
// --ours-only writes each size with this library alone, in this process,
// and prints time and peak memory: the mode to run under a profiler.

#include <hdf5.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Measure.h"
#include "reader/Container.h"
#include "Model.h"
#include "Report.h"
#include "Writers.h"

#ifndef DOVBENCH_BUILD_TYPE
#define DOVBENCH_BUILD_TYPE "unknown"
#endif

namespace bench {

namespace {

const double MiB = 1024.0 * 1024.0;
const double SteadySeconds = 3.0;  // of our first writer's wall time, per size
const int MostRuns = 20;

struct Options {
  std::vector<std::uint64_t> sizes{100000, 1000000, 10000000};
  std::uint64_t maxNodes = 10000000;
  CellKind kind = CellKind::Hexahedron;
  std::string dir = "/tmp/dovbench";
  std::string csv = "dovbench.csv";
  Hdf5Options hdf5;
  bool keep = false;
  bool oursOnly = false;
  int repeat = 3;
  unsigned threads = static_cast<unsigned>(sysconf(_SC_NPROCESSORS_ONLN));
  std::uint32_t blockBytes = 0;
  std::string modes = "exact1copy,exact1,exactN,fast1,fastN";
};

// The modes asked for; with `reference`, exact1copy first in any case, as
// every row of the table is set against it.
std::vector<OursMode> ChosenModes(const Options& options, bool reference) {
  const unsigned n = std::max(1u, options.threads);
  const std::string suffix = " x" + std::to_string(n);
  const std::vector<std::pair<std::string, OursMode>> all{
      {"exact1copy", MakeOursMode("exact x1 copy", 1, false, false)},
      {"exact1", MakeOursMode("exact x1", 1, false, true)},
      {"exactN", MakeOursMode(("exact" + suffix).c_str(), n, false, true)},
      {"fast1", MakeOursMode("fast x1", 1, true, true, options.blockBytes)},
      {"fastN", MakeOursMode(("fast" + suffix).c_str(), n, true, true, options.blockBytes)}};
  std::vector<OursMode> chosen;
  for (std::size_t m = 0; m < all.size(); ++m)
    if ((m == 0 && reference) ||
        ("," + options.modes + ",").find("," + all[m].first + ",") != std::string::npos)
      chosen.push_back(all[m].second);
  return chosen;
}

std::vector<std::uint64_t> ParseSizes(const std::string& text) {
  std::vector<std::uint64_t> sizes;
  std::stringstream list(text);
  for (std::string item; std::getline(list, item, ',');)
    sizes.push_back(static_cast<std::uint64_t>(std::stod(item)));
  return sizes;
}

Options ParseOptions(int argc, char** argv) {
  Options options;
  for (int a = 1; a < argc; ++a) {
    const std::string arg = argv[a];
    auto value = [&]() -> std::string {
      if (a + 1 >= argc) throw std::runtime_error(arg + " needs a value");
      return argv[++a];
    };
    if (arg == "--quick") options.sizes = {10000, 100000};
    else if (arg == "--max-nodes") options.maxNodes = static_cast<std::uint64_t>(std::stod(value()));
    else if (arg == "--sizes") options.sizes = ParseSizes(value());
    else if (arg == "--cells") options.kind = value() == "tet" ? CellKind::Tetrahedron : CellKind::Hexahedron;
    else if (arg == "--dir") options.dir = value();
    else if (arg == "--csv") options.csv = value();
    else if (arg == "--hdf5-chunk-kib") options.hdf5.chunkBytes = 1024 * std::stoull(value());
    else if (arg == "--keep") options.keep = true;
    else if (arg == "--ours-only") options.oursOnly = true;
    else if (arg == "--repeat") options.repeat = std::max(1, std::stoi(value()));
    else if (arg == "--threads") options.threads = static_cast<unsigned>(std::stoul(value()));
    else if (arg == "--block-bytes") options.blockBytes = static_cast<std::uint32_t>(std::stod(value()));
    else if (arg == "--modes") options.modes = value();
    else throw std::runtime_error("unknown option " + arg);
  }
  return options;
}

std::string FirstLineWith(const char* path, const std::string& key) {
  std::ifstream in(path);
  for (std::string line; std::getline(in, line);)
    if (line.compare(0, key.size(), key) == 0) {
      const auto colon = line.find(':');
      return colon == std::string::npos ? line : line.substr(line.find_first_not_of(" \t", colon + 1));
    }
  return "unknown";
}

void PrintMachine(std::ostream& out, const Options& options) {
  unsigned major = 0, minor = 0, release = 0;
  H5get_libversion(&major, &minor, &release);
  out << "machine:  " << FirstLineWith("/proc/cpuinfo", "model name") << ", "
      << sysconf(_SC_NPROCESSORS_ONLN) << " cores, "
      << FirstLineWith("/proc/meminfo", "MemTotal") << "\n"
      << "compiler: " << __VERSION__ << ", build type " << DOVBENCH_BUILD_TYPE << "\n"
      << "zlib " << zlibVersion() << ", HDF5 " << major << "." << minor << "." << release
      << " (chunks of " << options.hdf5.chunkBytes / 1024 << " KiB, shuffle + deflate 6)\n"
      << "threads:  " << options.threads << " for the xN rows; fast blocks of "
      << (options.blockBytes != 0 ? options.blockBytes : LibraryFastBlockBytes) / 1024
      << " KiB\n"
      << "runs:     fastest of " << options.repeat << " per writer and size, more where "
      << SteadySeconds << " s of our writes need more (at most " << MostRuns
      << "); each run starts after sync, in a process of its own\n"
      << "model:    " << CellKindName(options.kind)
      << ", one element set per 100000 cells, a vector and a scalar result over 10 states\n";
  const MemoryTouchFigures memory =
      InChild<MemoryTouchFigures>([] { return MeasureMemoryTouch(std::uint64_t(512) << 20); });
  char line[200];
  std::snprintf(line, sizeof line,
                "memory:   writing pages the process never had: %.2f s per GiB of processor "
                "time; the same pages again: %.2f s (the setValues copies pay the first)\n",
                memory.firstSecondsPerGiB, memory.againSecondsPerGiB);
  out << line;
}

// Keeps the run of less wall time; memory is the most any run took.
void KeepFaster(WriteFigures& kept, const WriteFigures& run, bool first) {
  const std::uint64_t peak = first ? run.peakRssBytes : std::max(kept.peakRssBytes, run.peakRssBytes);
  if (first || run.wallSeconds < kept.wallSeconds) kept = run;
  kept.peakRssBytes = peak;
}

// The bytes count as zlib's only if they were in every run.
void KeepFaster(LimitFigures& kept, const LimitFigures& run, bool first) {
  const bool same = first ? run.sameBytes : kept.sameBytes && run.sameBytes;
  if (first || run.wallSeconds < kept.wallSeconds) kept = run;
  kept.sameBytes = same;
}

// Enough runs for SteadySeconds of our writer, at most MostRuns.
int RunsForSteadyFigures(double secondsPerRun) {
  if (secondsPerRun * MostRuns <= SteadySeconds) return MostRuns;
  return static_cast<int>(std::ceil(SteadySeconds / secondsPerRun));
}

// Every file must be sound by the container's rules.
void RequireSound(const std::string& path) {
  const std::vector<std::string> problems = DovReader::Container::Verify(path);
  if (!problems.empty()) throw std::runtime_error(path + ": " + problems.front());
}

SizeResult Measure(const ModelShape& shape, const Options& options) {
  const std::string stem = options.dir + "/model-" + std::to_string(shape.nodes);
  const std::string peer = stem + ".h5";
  SizeResult result;
  result.shape = shape;
  result.modes = ChosenModes(options, true);
  result.ours.resize(result.modes.size());
  // Each writer runs in a child of a parent that never holds model data,
  // so that a child's peak memory is its own. Every run writes a new file:
  // replacing the last run's would add the freeing of its pages to the
  // writer's time.
  int runs = options.repeat;
  for (int run = 0; run < runs; ++run) {
    const bool first = run == 0;
    for (std::size_t m = 0; m < result.modes.size(); ++m) {
      const std::string path = stem + "-" + std::to_string(m) + ".dov";
      std::remove(path.c_str());
      KeepFaster(result.ours[m],
                 InChild<WriteFigures>([&] { return WriteOurs(shape, path, result.modes[m]); }),
                 first);
      if (first) RequireSound(path);
    }
    if (first) runs = std::max(runs, RunsForSteadyFigures(result.ours[0].wallSeconds));
    KeepFaster(result.limit, InChild<LimitFigures>([&] { return MeasureLimit(stem + "-0.dov"); }),
               first);
    std::remove(peer.c_str());
    KeepFaster(result.hdf5,
               InChild<WriteFigures>([&] { return WriteHdf5(shape, peer, options.hdf5); }), first);
  }
  if (!options.keep) {
    for (std::size_t m = 0; m < result.modes.size(); ++m)
      std::remove((stem + "-" + std::to_string(m) + ".dov").c_str());
    std::remove(peer.c_str());
  }
  return result;
}

int RunOursOnly(const Options& options) {
  for (std::uint64_t size : options.sizes) {
    if (size > options.maxNodes) continue;
    const ModelShape shape = PlanModel(size, options.kind);
    for (const OursMode& mode : ChosenModes(options, false)) {
      const std::string path = options.dir + "/model-ours-only.dov";
      std::remove(path.c_str());
      SettleFiles();
      const WriteFigures ours = WriteOurs(shape, path, mode);
      std::printf("%llu nodes, %s: %.3f s (cpu %.3f s), peak %.1f MiB, input %.1f MiB, "
                  "file %.1f MiB\n",
                  static_cast<unsigned long long>(shape.nodes), mode.name, ours.wallSeconds,
                  ours.cpuSeconds, ours.peakRssBytes / MiB, shape.HostBytes() / MiB,
                  ours.fileBytes / MiB);
    }
  }
  return 0;
}

int Run(int argc, char** argv) {
  const Options options = ParseOptions(argc, argv);
  if (std::system(("mkdir -p '" + options.dir + "'").c_str()) != 0)
    throw std::runtime_error("cannot make " + options.dir);
  if (options.oursOnly) return RunOursOnly(options);
  PrintMachine(std::cout, options);
  PrintTableHead(std::cout);
  std::vector<SizeResult> results;
  for (std::uint64_t size : options.sizes) {
    if (size > options.maxNodes) continue;
    results.push_back(Measure(PlanModel(size, options.kind), options));
    PrintSize(std::cout, results.back());
    WriteCsv(options.csv, results);
  }
  PrintLegend(std::cout);
  std::cout << "csv: " << options.csv << "\n";
  return 0;
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv) {
  try {
    return bench::Run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "dovbench: " << error.what() << "\n";
    return 1;
  }
}
