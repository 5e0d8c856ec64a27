// dovbench: writes synthetic models of growing size with this library and,
// in the same run, with HDF5, and sets both against what zlib alone needs.
//
//   dovbench [--quick] [--max-nodes N] [--sizes N,N,...] [--cells hex|tet]
//            [--dir DIR] [--csv FILE] [--hdf5-chunk-kib K] [--keep] [--ours-only]
//            [--repeat N]
//
// Each size is measured N times (3 by default), the three writers taking
// turns, and each writer's fastest run counts: on a shared machine the
// slowest runs measure the neighbours. Small models get more runs, so that
// each writer is measured for some seconds: a busy second of the machine
// would otherwise decide the row.
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
#include "Model.h"
#include "Writers.h"

#ifndef DOVBENCH_BUILD_TYPE
#define DOVBENCH_BUILD_TYPE "unknown"
#endif

namespace bench {

namespace {

const double MiB = 1024.0 * 1024.0;
const double SteadySeconds = 3.0;  // of our writer's processor time, per size
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
};

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
      << "runs:     fastest of " << options.repeat << " per writer and size, more where "
      << SteadySeconds << " s of our writes need more (at most " << MostRuns << ")\n"
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

struct Row {
  ModelShape shape;
  WriteFigures ours, hdf5;
  LimitFigures limit;

  double InputMiB() const { return shape.HostBytes() / MiB; }
  // 1.0 x the host's arrays + 1.3 x one heavy block + 64 MiB.
  double MemoryBudget() const {
    return shape.HostBytes() + 1.3 * limit.largestHeavyBlock + 64 * MiB;
  }
};

// Keeps the run of less processor time; memory is the most any run took,
// and the bytes count as zlib's only if they were in every run.
void KeepFaster(WriteFigures& kept, const WriteFigures& run, bool first) {
  const std::uint64_t peak = first ? run.peakRssBytes : std::max(kept.peakRssBytes, run.peakRssBytes);
  if (first || run.cpuSeconds < kept.cpuSeconds) kept = run;
  kept.peakRssBytes = peak;
}

void KeepFaster(LimitFigures& kept, const LimitFigures& run, bool first) {
  const bool same = first ? run.sameBytes : kept.sameBytes && run.sameBytes;
  if (first || run.cpuSeconds < kept.cpuSeconds) kept = run;
  kept.sameBytes = same;
}

// Enough runs for SteadySeconds of our writer, at most MostRuns.
int RunsForSteadyFigures(double secondsPerRun) {
  if (secondsPerRun * MostRuns <= SteadySeconds) return MostRuns;
  return static_cast<int>(std::ceil(SteadySeconds / secondsPerRun));
}

Row Measure(const ModelShape& shape, const Options& options) {
  const std::string ours = options.dir + "/model-" + std::to_string(shape.nodes) + ".dov";
  const std::string peer = options.dir + "/model-" + std::to_string(shape.nodes) + ".h5";
  Row row;
  row.shape = shape;
  // Each writer runs in a child of a parent that never holds model data,
  // so that a child's peak memory is its own.
  // Every run writes a new file: replacing the last run's would add the
  // freeing of its pages to the writer's time.
  int runs = options.repeat;
  for (int run = 0; run < runs; ++run) {
    const bool first = run == 0;
    std::remove(ours.c_str());
    std::remove(peer.c_str());
    KeepFaster(row.ours, InChild<WriteFigures>([&] { return WriteOurs(shape, ours); }), first);
    if (first) runs = std::max(runs, RunsForSteadyFigures(row.ours.cpuSeconds));
    KeepFaster(row.limit, InChild<LimitFigures>([&] { return MeasureLimit(ours); }), first);
    KeepFaster(row.hdf5,
               InChild<WriteFigures>([&] { return WriteHdf5(shape, peer, options.hdf5); }), first);
  }
  if (!options.keep) {
    std::remove(ours.c_str());
    std::remove(peer.c_str());
  }
  return row;
}

void PrintHeader() {
  std::printf("%10s %10s %9s | %7s %7s %7s %7s %7s %7s %7s | %8s %8s %5s | %8s %8s %6s | "
              "%8s %8s %6s %4s\n",
              "nodes", "cells", "input MiB", "ours s", "cpu s", "copy s", "MB/s", "limit s",
              "hdf5 s", "cpu s", "ours/lim", "ours/h5", "zlib=", "ours MiB", "hdf5 MiB", "size",
              "peak MiB", "budget", "rss/in", "mem");
  std::fflush(stdout);
}

double Ratio(double a, double b) { return b > 0 ? a / b : 0; }

void PrintRow(const Row& r) {
  std::printf("%10llu %10llu %9.1f | %7.2f %7.2f %7.2f %7.1f %7.2f %7.2f %7.2f | %8.3f %8.3f %5s | "
              "%8.1f %8.1f %6.3f | %8.1f %8.1f %6.3f %4s\n",
              static_cast<unsigned long long>(r.shape.nodes),
              static_cast<unsigned long long>(r.shape.cells), r.InputMiB(), r.ours.wallSeconds,
              r.ours.cpuSeconds, r.ours.handOverCpuSeconds,
              Ratio(r.shape.HostBytes() / 1e6, r.ours.wallSeconds),
              r.limit.cpuSeconds, r.hdf5.wallSeconds, r.hdf5.cpuSeconds,
              Ratio(r.ours.cpuSeconds, r.limit.cpuSeconds),
              Ratio(r.ours.cpuSeconds, r.hdf5.cpuSeconds), r.limit.sameBytes ? "yes" : "NO",
              r.ours.fileBytes / MiB, r.hdf5.fileBytes / MiB,
              Ratio(r.ours.fileBytes, r.hdf5.fileBytes), r.ours.peakRssBytes / MiB,
              r.MemoryBudget() / MiB, Ratio(r.ours.peakRssBytes, r.shape.HostBytes()),
              r.ours.peakRssBytes <= r.MemoryBudget() ? "ok" : "OVER");
  std::fflush(stdout);
}

void WriteCsv(const std::string& path, const std::vector<Row>& rows) {
  std::ofstream csv(path);
  csv << "nodes,cells,input_bytes,ours_wall_s,ours_cpu_s,ours_handover_cpu_s,ours_mb_per_s,"
         "limit_wall_s,limit_cpu_s,"
         "hdf5_wall_s,hdf5_cpu_s,ours_over_limit_cpu,ours_over_hdf5_cpu,ours_over_limit_wall,"
         "ours_over_hdf5_wall,ours_bytes,hdf5_bytes,size_ours_over_hdf5,peak_rss_bytes,"
         "rss_over_input,largest_heavy_block,memory_budget_bytes,hdf5_peak_rss_bytes,"
         "same_zlib_bytes\n";
  for (const Row& r : rows)
    csv << r.shape.nodes << ',' << r.shape.cells << ',' << r.shape.HostBytes() << ','
        << r.ours.wallSeconds << ',' << r.ours.cpuSeconds << ',' << r.ours.handOverCpuSeconds
        << ',' << Ratio(r.shape.HostBytes() / 1e6, r.ours.wallSeconds) << ',' << r.limit.wallSeconds
        << ',' << r.limit.cpuSeconds << ',' << r.hdf5.wallSeconds << ',' << r.hdf5.cpuSeconds
        << ',' << Ratio(r.ours.cpuSeconds, r.limit.cpuSeconds) << ','
        << Ratio(r.ours.cpuSeconds, r.hdf5.cpuSeconds) << ','
        << Ratio(r.ours.wallSeconds, r.limit.wallSeconds) << ','
        << Ratio(r.ours.wallSeconds, r.hdf5.wallSeconds) << ',' << r.ours.fileBytes << ','
        << r.hdf5.fileBytes << ',' << Ratio(r.ours.fileBytes, r.hdf5.fileBytes) << ','
        << r.ours.peakRssBytes << ',' << Ratio(r.ours.peakRssBytes, r.shape.HostBytes()) << ','
        << r.limit.largestHeavyBlock << ',' << static_cast<std::uint64_t>(r.MemoryBudget()) << ','
        << r.hdf5.peakRssBytes << ',' << (r.limit.sameBytes ? 1 : 0) << '\n';
  if (!csv) throw std::runtime_error("cannot write " + path);
}

int RunOursOnly(const Options& options) {
  for (std::uint64_t size : options.sizes) {
    if (size > options.maxNodes) continue;
    const ModelShape shape = PlanModel(size, options.kind);
    const std::string path = options.dir + "/model-ours-only.dov";
    std::remove(path.c_str());
    const WriteFigures ours = WriteOurs(shape, path);
    std::printf("%llu nodes: %.3f s (cpu %.3f s), peak %.1f MiB, input %.1f MiB, file %.1f MiB\n",
                static_cast<unsigned long long>(shape.nodes), ours.wallSeconds, ours.cpuSeconds,
                ours.peakRssBytes / MiB, shape.HostBytes() / MiB, ours.fileBytes / MiB);
  }
  return 0;
}

int Run(int argc, char** argv) {
  const Options options = ParseOptions(argc, argv);
  if (std::system(("mkdir -p '" + options.dir + "'").c_str()) != 0)
    throw std::runtime_error("cannot make " + options.dir);
  if (options.oursOnly) return RunOursOnly(options);
  PrintMachine(std::cout, options);
  std::cout.flush();
  PrintHeader();
  std::vector<Row> rows;
  for (std::uint64_t size : options.sizes) {
    if (size > options.maxNodes) continue;
    rows.push_back(Measure(PlanModel(size, options.kind), options));
    PrintRow(rows.back());
    WriteCsv(options.csv, rows);
  }
  std::cout << "ours: library calls from the first setValues to the end of closeFile, wall and "
               "processor time; copy: of that, the setValues calls (copies into fresh memory); "
               "limit: processor time of compress2 level 6 alone on the same "
               "blocks; ratios of processor time; zlib=: our blocks equal compress2's bytes; "
               "budget: host arrays + 1.3 x largest heavy block + 64 MiB\n"
            << "csv: " << options.csv << "\n";
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
