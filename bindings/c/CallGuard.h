#ifndef DOVWRITER_BINDINGS_C_CALLGUARD_H
#define DOVWRITER_BINDINGS_C_CALLGUARD_H

// Where the C interface meets the C++ library. Every function of the C
// interface runs its work through Guard (or Call, which also finds the
// scene's handle), so that whatever the work throws becomes a return code
// and the calling thread's last error, and no exception reaches C code.

#include <DovWriter/DovWriter.h>
#include <DovWriter/ScenePart.h>
#include <DovWriter/dovwriter.h>

#include <memory>
#include <type_traits>

struct dov_scene {
  dov_scene(const char* title, int version)
      : version(version), own(new Kel::Dov::Scene_V2(title)), handle(*own) {}
  // A part of a file that several processes write: of the newest version,
  // with saveTo and closeFile of the part.
  explicit dov_scene(Kel::Dov::Scene_V2Part* part) : version(2), part(part), handle(*part) {}

  // The interface version the host asked for. The handle is always of the
  // newest version: the versions differ in the operations they offer, not
  // in what a shared operation does.
  const int version;
  std::unique_ptr<Kel::Dov::Scene_V2> own;
  std::unique_ptr<Kel::Dov::Scene_V2Part> part;
  Kel::Dov::Scene_V2& handle;
  dov_diagnostic_handler handler = nullptr;
  void* user = nullptr;
};

namespace DovC {

// Records the exception being handled as the calling thread's last error
// and returns its code. Only to be called inside a catch block.
int RecordCurrentException() noexcept;

template <class Work>
int Guard(Work&& work) noexcept {
  try {
    work();
    return 0;
  } catch (...) {
    return RecordCurrentException();
  }
}

// The scene's handle, once the scene is known to be there and to offer the
// interface version that `function` belongs to.
Kel::Dov::Scene_V2& HandleOf(dov_scene* scene, int version, const char* function);

template <class Handle>
struct VersionOf;
template <>
struct VersionOf<Kel::Dov::Scene_V0> : std::integral_constant<int, 0> {};
template <>
struct VersionOf<Kel::Dov::Scene_V1> : std::integral_constant<int, 1> {};
template <>
struct VersionOf<Kel::Dov::Scene_V2> : std::integral_constant<int, 2> {};

// Runs `work` with the scene's handle seen as the interface `Handle`.
template <class Handle, class Work>
int Call(dov_scene* scene, const char* function, Work&& work) noexcept {
  return Guard([&] {
    Handle& handle = HandleOf(scene, VersionOf<Handle>::value, function);
    work(handle);
  });
}

[[noreturn]] void NullResult(const char* function);

// Where a function hands back a result; fails before any work is done if
// the host gave no place for it.
template <class T>
T& ResultPlace(T* place, const char* function) {
  if (place == nullptr) NullResult(function);
  return *place;
}

inline Kel::Dov::Identifier Id(dov_id id) { return Kel::Dov::Identifier{id.first, id.second}; }

}  // namespace DovC

#endif
