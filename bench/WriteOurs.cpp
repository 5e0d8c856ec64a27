#include <DovWriter/DovWriter.h>

#include <string>
#include <utility>

#include "Measure.h"
#include "SceneFeeder.h"
#include "Writers.h"

namespace bench {

WriteFigures WriteOurs(const ModelShape& shape, const std::string& path, const OursMode& mode) {
  Stopwatch watch;
  double handOver = 0;
  {
    Kel::Dov::Scene_V2 scene("Benchmark");
    Kel::Dov::WriteOptions options;
    options.threads = mode.threads;
    options.encoding = mode.fast ? Kel::Dov::Encoding::Fast : Kel::Dov::Encoding::Exact;
    options.blockBytes = mode.blockBytes;
    scene.setWriteOptions(options);
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
