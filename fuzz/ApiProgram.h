#ifndef DOVFUZZ_APIPROGRAM_H
#define DOVFUZZ_APIPROGRAM_H

// API programs: bytes read as a sequence of public Scene_V1 calls, so that
// a fuzzer can search the space of what a host may do, mistakes included.
//
// A program is a sequence of operations: one byte names the operation
// (modulo kOpCount), the bytes behind it are its arguments, as listed; a
// byte past the end reads as 0. "obj" is one byte that chooses one of the
// objects created so far (254 and 255 give identifiers of no object), "value"
// one byte that chooses an instance value of one of several element types,
// and "name" one byte that chooses a text from a fixed list.

#include <cstddef>
#include <cstdint>
#include <string>

namespace DovFuzz {

enum ApiOp : std::uint8_t {
  kCreate,           // type
  kName,             // obj, name
  kDimension,        // obj, dimension
  kFloats,           // obj, tuples, first, step: floats from a fixed list
  kWords,            // obj, tuples, first, step, modulus: unsigned 32-bit values
  kOtherValues,      // obj, element type, tuples: types that mesh data does not take
  kHugeCount,        // obj: a count that no vector can hold
  kCoordinates,      // form, mesh, [group, value,] array
  kConnectivity,     // form, mesh, [group, value,] array [, polylength]
  kNodeIndices,      // form, mesh, [group, value,] array
  kElementIndices,   // form, mesh, [group, value,] array
  kResult,           // form, mesh, [group, value,] name, [type,] array
  kElementSet,       // form, mesh, [group, value, [name,]] set
  kComponent,        // form, parent, child [, transformation]
  kRemoveComponent,  // parent, index
  kMaterial,         // obj, material
  kAppearance,       // which, obj, argument
  kProperty,         // obj, key name, kind, value
  kDefaultViews,     // obj
  kSaveTo,           // where
  kCloseFile,        // where
  kInformation,      // which, name, value
  kOpCount
};

// Runs a program on a fresh Scene_V1 that saves to `path`. Every call must
// return or throw Kel::Util::Exception (with a known code), std::bad_alloc
// or std::length_error; every file that closeFile finishes must be sound
// to `dovinspect verify` and hold only values that the program recorded.
// Anything else aborts the process. Returns the number of files finished.
int RunApiProgram(const std::uint8_t* data, std::size_t size, const std::string& path);

}  // namespace DovFuzz

#endif
