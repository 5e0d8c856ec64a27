// dovbench_mpi: one model written by all ranks of an MPI job into one file,
// each rank handing over a slab of it (the model cut along z), against the
// whole model written by one process: by Scene_V2 alone with the Fast
// encoding and as many threads as there are ranks, and by HDF5.
//
//   mpirun -np N dovbench_mpi [--nodes N] [--repeat R] [--dir DIR]
//                             [--threads-per-rank T] [--threads-alone A] [--no-hdf5]
//
// Each writer runs --repeat times (3 by default), taking turns, and its
// fastest run counts. Every writer is timed over its library calls only,
// not the making of arrays; the MPI row takes the slowest rank's time (its
// closeFile ends with the last rank's). While rank 0 writes alone the other
// ranks wait asleep, so that they take no processor from it.

#include <DovWriter/DovWriterMpi.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "Measure.h"
#include "Model.h"
#include "SceneFeeder.h"
#include "Writers.h"

namespace bench {

namespace {

struct Options {
  std::uint64_t nodes = 10000000;
  int repeat = 3;
  std::string dir = "/tmp/dovbench";
  unsigned threadsPerRank = 1;
  unsigned threadsAlone = 0;  // 0: ranks x threads per rank
  bool hdf5 = true;
};

Options Parse(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    const char* value = i + 1 < argc ? argv[i + 1] : nullptr;
    if (arg == "--no-hdf5") {
      options.hdf5 = false;
      continue;
    }
    if (value == nullptr) {
      std::fprintf(stderr, "dovbench_mpi: %s needs a value, or is unknown\n", arg.c_str());
      std::exit(2);
    }
    ++i;
    if (arg == "--nodes") options.nodes = std::strtoull(value, nullptr, 10);
    else if (arg == "--repeat") options.repeat = std::max(1, std::atoi(value));
    else if (arg == "--dir") options.dir = value;
    else if (arg == "--threads-per-rank") options.threadsPerRank = std::max(1, std::atoi(value));
    else if (arg == "--threads-alone") options.threadsAlone = std::max(1, std::atoi(value));
    else {
      std::fprintf(stderr, "dovbench_mpi: unknown option %s\n", arg.c_str());
      std::exit(2);
    }
  }
  return options;
}

// A barrier that sleeps: a rank waiting here leaves the processor to the
// rank that works.
void WaitAsleep() {
  MPI_Request request;
  MPI_Ibarrier(MPI_COMM_WORLD, &request);
  for (int done = 0; !done; usleep(2000)) MPI_Test(&request, &done, MPI_STATUS_IGNORE);
}

struct Timing {
  double wall = 1e300;
  double cpu = 0;  // processor seconds, of every rank together
};

// Every rank writes its slab; the wall time of the slowest rank counts.
Timing WriteByAllRanks(const ModelShape& whole, const std::string& path, const Options& options) {
  int rank = 0, ranks = 1;
  MPI_Comm_rank(MPI_COMM_WORLD, &rank);
  MPI_Comm_size(MPI_COMM_WORLD, &ranks);
  const ModelShape slab = SliceModel(whole, rank, ranks);
  const OursMode mode = MakeOursMode("mpi", options.threadsPerRank, true, true);
  if (rank == 0) SettleFiles();
  WaitAsleep();
  Stopwatch watch;
  {
    Kel::Dov::Scene_V2Mpi scene(MPI_COMM_WORLD, "Benchmark");
    scene.setWriteOptions(WriteOptionsOf(mode));
    SceneFeeder feeder(slab, mode.lend, scene, watch);  // keeps the lent arrays to the end
    feeder.Feed();
    // Arrays are made at different speeds on the ranks; the write starts
    // together, so that no rank's closeFile counts another's making.
    WaitAsleep();
    watch.Time([&] {
      scene.saveTo(path.c_str(), nullptr, false, true);
      scene.closeFile(path.c_str());
    });
  }
  Timing timing;
  timing.wall = watch.WallSeconds();
  timing.cpu = watch.CpuSeconds();
  MPI_Allreduce(MPI_IN_PLACE, &timing.wall, 1, MPI_DOUBLE, MPI_MAX, MPI_COMM_WORLD);
  MPI_Allreduce(MPI_IN_PLACE, &timing.cpu, 1, MPI_DOUBLE, MPI_SUM, MPI_COMM_WORLD);
  return timing;
}

// The run with the least wall time.
void KeepFastest(Timing& best, const Timing& run) {
  if (run.wall < best.wall) best = run;
}

void Row(const char* writer, const Timing& timing, const Timing& mpi, const std::string& path) {
  std::printf("| %-30s | %8.2f | %10.2f | %7.2f | %9.2f | %9.1f |\n", writer, timing.wall,
              timing.wall / mpi.wall, timing.cpu, timing.cpu / mpi.cpu,
              FileBytes(path) / 1048576.0);
}

Timing Single(const WriteFigures& figures) {
  Timing timing;
  timing.wall = figures.wallSeconds;
  timing.cpu = figures.cpuSeconds;
  return timing;
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv) {
  using namespace bench;
  MPI_Init(&argc, &argv);
  int rank = 0, ranks = 1;
  MPI_Comm_rank(MPI_COMM_WORLD, &rank);
  MPI_Comm_size(MPI_COMM_WORLD, &ranks);
  const Options options = Parse(argc, argv);
  const ModelShape whole = PlanModel(options.nodes, CellKind::Hexahedron);
  const std::string mpiPath = options.dir + "/mpi.dov", alonePath = options.dir + "/alone.dov",
                    hdf5Path = options.dir + "/alone.h5";
  if (rank == 0) std::system(("mkdir -p '" + options.dir + "'").c_str());
  const unsigned threads =
      options.threadsAlone != 0 ? options.threadsAlone : ranks * options.threadsPerRank;
  Timing mpi, alone, hdf5;
  for (int run = 0; run < options.repeat; ++run) {
    KeepFastest(mpi, WriteByAllRanks(whole, mpiPath, options));
    if (rank == 0) {
      const OursMode mode = MakeOursMode("fastN", threads, true, true);
      SettleFiles();
      KeepFastest(alone, Single(WriteOurs(whole, alonePath, mode)));
      SettleFiles();
      if (options.hdf5) KeepFastest(hdf5, Single(WriteHdf5(whole, hdf5Path, Hdf5Options())));
    }
    WaitAsleep();
  }
  if (rank == 0) {
    std::printf("%llu nodes, %llu hexahedra, %u states; %d ranks x %u threads; "
                "fastest of %d runs\n\n",
                static_cast<unsigned long long>(whole.nodes),
                static_cast<unsigned long long>(whole.cells), whole.states, ranks,
                options.threadsPerRank, options.repeat);
    std::printf("| %-30s | %8s | %10s | %7s | %9s | %9s |\n|---|---|---|---|---|---|\n",
                "writer", "wall s", "/ MPI", "cpu s", "cpu / MPI", "file MiB");
    const std::string mpiName = "Scene_V2Mpi, " + std::to_string(ranks) + " ranks";
    const std::string aloneName = "Scene_V2 Fast, " + std::to_string(threads) + " threads";
    Row(mpiName.c_str(), mpi, mpi, mpiPath);
    Row(aloneName.c_str(), alone, mpi, alonePath);
    if (options.hdf5) Row("HDF5, one process", hdf5, mpi, hdf5Path);
  }
  MPI_Finalize();
  return 0;
}
