// The calling thread's last error, and the translation of every exception
// into a code of the C interface.

#include "bindings/c/CallGuard.h"

#include <DovWriter/Version.h>
#include <cstdio>
#include <new>
#include <stdexcept>
#include <string>

#include "Kel/Util/Raise.h"

namespace DovC {

namespace {

// Fixed arrays, so that recording a failure never allocates: it must work
// when memory has run out.
struct LastError {
  int code = 0;
  char description[Kel::Util::LogRecord::MaxMessageLength + 1] = "";
  char message[Kel::Util::Exception::MaxWhatLength] = "";
};

thread_local LastError lastError;

int Record(int code, const char* description, const char* message) noexcept {
  lastError.code = code;
  std::snprintf(lastError.description, sizeof lastError.description, "%s", description);
  std::snprintf(lastError.message, sizeof lastError.message, "%s", message);
  return code;
}

}  // namespace

int RecordCurrentException() noexcept {
  try {
    throw;
  } catch (const Kel::Util::Exception& error) {
    const int code = error.GetCode() == 0 ? DOV_ERROR_OUT_OF_MEMORY : error.GetCode();
    return Record(code, error.GetDescription(), error.what());
  } catch (const std::bad_alloc& error) {
    return Record(DOV_ERROR_OUT_OF_MEMORY, "Memory Allocation Error", error.what());
  } catch (const std::length_error& error) {
    return Record(DOV_ERROR_LENGTH, "Length Error", error.what());
  } catch (const std::exception& error) {
    return Record(DOV_ERROR_UNEXPECTED, "Unexpected Error", error.what());
  } catch (...) {
    return Record(DOV_ERROR_UNEXPECTED, "Unexpected Error", "an exception of an unknown type");
  }
}

Kel::Dov::Scene_V2& HandleOf(dov_scene* scene, int version, const char* function) {
  if (scene == nullptr) KEL_RAISE(16, "Null scene", function);
  if (scene->version < version) {
    const std::string description = std::string(function) + " needs interface version " +
                                    std::to_string(version) + "; the scene is of version " +
                                    std::to_string(scene->version);
    KEL_RAISE(6, description.c_str(), function);
  }
  return scene->handle;
}

void NullResult(const char* function) { KEL_RAISE(16, "Null result pointer", function); }

}  // namespace DovC

int dov_last_error_code(void) { return DovC::lastError.code; }

const char* dov_last_error_description(void) { return DovC::lastError.description; }

const char* dov_last_error_message(void) { return DovC::lastError.message; }

const char* dov_library_version(void) { return Kel::Dov::libraryVersion(); }
