#include <DovWriter/DovWriter.h>

#include <cstdio>
#include <string>
#include <utility>

#include "Measure.h"
#include "SceneFeeder.h"
#include "Writers.h"

namespace bench {

OursMode MakeOursMode(const char* name, unsigned threads, bool fast, bool lend,
                      std::uint32_t blockBytes) {
  OursMode mode;
  std::snprintf(mode.name, sizeof mode.name, "%s", name);
  mode.threads = threads;
  mode.fast = fast;
  mode.lend = lend;
  mode.blockBytes = fast ? blockBytes : 0;
  return mode;
}

Kel::Dov::WriteOptions WriteOptionsOf(const OursMode& mode) {
  Kel::Dov::WriteOptions options;
  options.threads = mode.threads;
  options.encoding = mode.fast ? Kel::Dov::Encoding::Fast : Kel::Dov::Encoding::Exact;
  options.blockBytes = mode.blockBytes;
  return options;
}

WriteFigures WriteOurs(const ModelShape& shape, const std::string& path, const OursMode& mode) {
  Stopwatch watch;
  double handOver = 0;
  {
    Kel::Dov::Scene_V2 scene("Benchmark");
    scene.setWriteOptions(WriteOptionsOf(mode));
    SceneFeeder feeder(shape, mode.lend, scene, watch);
    feeder.Feed();
    handOver = watch.CpuSeconds();
    watch.Time([&] {
      scene.saveTo(path.c_str(), nullptr, false, true);
      scene.closeFile(path.c_str());
    });
  }
  WriteFigures figures = FinishedWrite(watch, path);
  figures.handOverCpuSeconds = handOver;
  return figures;
}

WriteFigures FinishedWrite(const Stopwatch& watch, const std::string& path) {
  WriteFigures figures;
  figures.wallSeconds = watch.WallSeconds();
  figures.cpuSeconds = watch.CpuSeconds();
  figures.peakRssBytes = PeakRssBytes();
  figures.fileBytes = FileBytes(path);
  return figures;
}

}  // namespace bench
