#ifndef DOVWRITER_OBJECTMANAGER_DIAGNOSTICS_H
#define DOVWRITER_OBJECTMANAGER_DIAGNOSTICS_H

// The channel through which a scene of the third interface version tells
// its host what the file will not hold, why a file operation failed, and
// how far closeFile() has come. Without a handler nothing here does any
// work, so the first two interface versions, which have no channel, write
// and log exactly as before.

#include <DovWriter/Scene_V2.h>

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <utility>

namespace Kel {
namespace Dov {

class ObjectManager;

class DiagnosticChannel {
 public:
  void attach(DiagnosticHandler handler, void* user);
  bool active() const { return handler != nullptr; }

  // Sends a warning, unless one of the same code went out for the same
  // object since the last forgetWarnings(): one per object and cause, even
  // where the walk meets an object many times. Warnings about a file
  // operation name no object (NoObject) and go out every time.
  void warn(WarningCode code, std::uint64_t object, const std::string& text);
  void forgetWarnings() { warned.clear(); }

  void progress(std::uint64_t done, std::uint64_t total);

 private:
  DiagnosticHandler handler = nullptr;
  void* user = nullptr;
  std::set<std::pair<WarningCode, std::uint64_t>> warned;
};

// The progress of one closeFile(): plain bytes of numbers handed to the
// file against the total worked out before the walk. Reports at the start,
// for every block of numbers written, whenever another thousandth is done,
// and at the end.
class ProgressMeter {
 public:
  ProgressMeter(DiagnosticChannel& channel, std::uint64_t total);
  // The stream of numbers has grown to `length` bytes.
  void datasetWritten(std::uint64_t length);
  void blockWritten() { report(); }
  void finish();

 private:
  void report() { channel.progress(done, total); }

  DiagnosticChannel& channel;
  std::uint64_t total;
  std::uint64_t done = 0;
  std::uint64_t step;  // bytes per reported thousandth
  std::uint64_t reportedSteps = 0;
};

// Progress for the time of one closeFile(), where the scene has a handler:
// hooks the meter to the blocks of numbers that reach the file and to the
// datasets the builders write, and unhooks it however closeFile() ends.
class CloseProgress {
 public:
  CloseProgress(ObjectManager& scene, std::uint64_t total);
  ~CloseProgress();
  CloseProgress(const CloseProgress&) = delete;
  CloseProgress& operator=(const CloseProgress&) = delete;
  void finish();

 private:
  ObjectManager& scene;
  std::unique_ptr<ProgressMeter> meter;
};

// `object 5 "Plate"`: how every warning names an object.
std::string describeObject(const ObjectManager& scene, std::uint64_t index);

}  // namespace Dov
}  // namespace Kel

#endif
