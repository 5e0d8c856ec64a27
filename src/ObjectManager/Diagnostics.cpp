// The diagnostics channel: sending records to the host's handler, progress
// during closeFile(), and the warnings that explain a failed or ignored
// file operation where the exception's text cannot (which path, which
// system reason, which flag).

#include "ObjectManager/Diagnostics.h"

#include <cerrno>
#include <cstring>
#include <sstream>

#include "Kel/Dov/Tree.h"
#include "ObjectManager/ObjectManager.h"

namespace Kel {
namespace Dov {

void DiagnosticChannel::attach(DiagnosticHandler newHandler, void* newUser) {
  handler = newHandler;
  user = newHandler != nullptr ? newUser : nullptr;
}

void DiagnosticChannel::warn(WarningCode code, std::uint64_t object, const std::string& text) {
  if (handler == nullptr) return;
  if (object != NoObject && !warned.insert(std::make_pair(code, object)).second) return;
  const DiagnosticRecord record{
      Diagnostic::Warning, static_cast<std::int32_t>(code), object, text.c_str(), 0, 0};
  handler(record, user);
}

void DiagnosticChannel::progress(std::uint64_t done, std::uint64_t total) {
  if (handler == nullptr) return;
  const DiagnosticRecord record{Diagnostic::Progress, 0, NoObject, "", done, total};
  handler(record, user);
}

ProgressMeter::ProgressMeter(DiagnosticChannel& channel, std::uint64_t total)
    : channel(channel), total(total), step(total / 1000 + 1) {
  report();
}

void ProgressMeter::datasetWritten(std::uint64_t length) {
  // Capped, so that a total worked out short can never show more than all.
  if (length > total) length = total;
  if (length <= done) return;
  done = length;
  if (done / step == reportedSteps) return;
  reportedSteps = done / step;
  report();
}

void ProgressMeter::finish() {
  done = total;
  report();
}

std::string describeObject(const ObjectManager& scene, std::uint64_t index) {
  std::ostringstream text;
  text << "object " << index << " \"" << scene.record(index).name << "\"";
  return text.str();
}

namespace {

std::string quotePath(const char* path) {
  return path != nullptr ? "\"" + std::string(path) + "\"" : std::string("null");
}

std::string systemReason(int reason) {
  return reason != 0 ? std::strerror(reason) : "the system gave no reason";
}

bool says(const Kel::Util::Exception& failure, const char* text) {
  return std::strncmp(failure.GetDescription(), text, std::strlen(text)) == 0;
}

}  // namespace

void ObjectManager::warn(WarningCode code, std::uint64_t object, const std::string& text) {
  diagnostics.warn(code, object, text);
}

void ObjectManager::explainIgnoredClose(const char* path) {
  if (!diagnostics.active()) return;
  std::string text = "closeFile(" + quotePath(path) + ") does nothing: ";
  if (fileState == FileState::Unbound && fileName.empty())
    text += "saveTo has not bound a file to this scene";
  else
    text +=
        "the file of this scene is \"" + fileName + "\", and the paths must match byte for byte";
  diagnostics.warn(WarningCode::CloseIgnored, NoObject, text);
}

void ObjectManager::explainFailure(const char* operation, const Kel::Util::Exception& failure,
                                   bool overwrite) {
  // First, before anything else can touch it: the failing call's errno,
  // which the raise kept.
  const int reason = errno;
  if (!diagnostics.active()) return;
  const std::string call = std::string(operation) + "(\"" + fileName + "\"): ";
  const int code = failure.GetCode();
  if (code == 10 && says(failure, "File exists")) {
    diagnostics.warn(WarningCode::FileExists, NoObject,
                     call + "the file exists and overwrite is " + (overwrite ? "true" : "false") +
                         ", so it was left as it is and no file is bound; pass overwrite = "
                         "true to replace it");
  } else if (code == 16 && says(failure, "Unable to open file")) {
    diagnostics.warn(WarningCode::FileFailure, NoObject,
                     call + "the file cannot be opened for writing: " + systemReason(reason));
  } else if (code == 16 && says(failure, "File stream is already in use")) {
    diagnostics.warn(WarningCode::FileFailure, NoObject,
                     call + "this scene's earlier file is still open; a scene writes one file");
  } else if (code == 10) {
    diagnostics.warn(
        WarningCode::FileFailure, NoObject,
        call + "writing the file failed: " + systemReason(reason) + "; the file is incomplete");
  }
}

CloseProgress::CloseProgress(ObjectManager& scene, std::uint64_t total) : scene(scene) {
  if (!scene.diagnostics.active()) return;
  meter.reset(new ProgressMeter(scene.diagnostics, total));
  scene.progress = meter.get();
  ProgressMeter* const blocks = meter.get();
  scene.GetFile().index.blockWritten = [blocks](const KelTmf::BlockRecord& record, std::uint32_t) {
    if (record.name == KelDov::HeavyDataStream) blocks->blockWritten();
  };
}

CloseProgress::~CloseProgress() {
  if (meter == nullptr) return;
  scene.GetFile().index.blockWritten = nullptr;
  scene.progress = nullptr;
}

void CloseProgress::finish() {
  if (meter != nullptr) meter->finish();
}

}  // namespace Dov
}  // namespace Kel
