#ifndef DOVWRITER_SCENE_V2_H
#define DOVWRITER_SCENE_V2_H

// The third version of the scene handle. Everything of Scene_V1 stands as
// it is; what is added here is asked for explicitly by a host and changes
// nothing for a host that does not ask: how the file is written (threads,
// encoding), arrays lent instead of copied, and a channel that tells the
// host what the file will not hold and how far a long write has come.

#include <cstdint>

#include "Export.h"
#include "Scene.h"
#include "Types.h"

namespace Kel {
namespace Dov {

// How the blocks of numbers are compressed.
//  Exact: every block is zlib's compress2 at level 6 of the same bytes that
//         a single-threaded write gives; the file is byte for byte the same
//         whatever the number of threads.
//  Fast:  the numbers are cut into many smaller blocks, each compressed on
//         its own by a faster encoder; the file is valid and every value
//         reads back the same, but its bytes differ from the Exact file's.
enum class Encoding : std::int32_t { Exact = 0, Fast = 1 };

struct WriteOptions {
  // Threads that work, the host's own included (1: no thread is started);
  // 0: one per hardware thread; at most 1024.
  unsigned threads = 1;
  Encoding encoding = Encoding::Exact;
  // Fast only: compression level, 1 (fastest) to 12 (smallest). Up to 9, a
  // block whose samples show noise (deflate would save less than 2 %) is
  // stored uncompressed inside its zlib stream instead of being searched.
  int level = 6;
  // Fast only: plain bytes per block of numbers, 4 KiB to 1 GiB; 0 lets the
  // library choose (4 MiB).
  std::uint32_t blockBytes = 0;
};

// What a diagnostic record is about.
enum class Diagnostic : std::int32_t { Progress = 0, Warning = 1 };

// The code of a Warning record: one stable number per kind of warning. The
// first group tells of data that the file will not hold, found when
// closeFile() starts (ResultWithoutGroup already at setResult); the second
// explains a file operation that failed or did nothing.
enum class WarningCode : std::int32_t {
  ElementType = 1,             // an array of an element type its role does not read
  SkippedObject = 2,           // an object that closeFile leaves out, and why
  ResultWithoutGroup = 3,      // setResult without an instance group records nothing
  UnusedMaterial = 4,          // setMaterial on an object that takes no material
  NameNotKept = 5,             // a name that the file does not keep
  InexactNodeId = 6,           // node ids that a 32-bit float does not hold exactly
  NodeOutsideCoordinates = 7,  // connectivity naming a node beyond the coordinates
  CellOutsideMesh = 8,         // element set cells on a mesh without those cells
  UnusedData = 9,              // data bound where nothing reads it
  AttributesNotKept = 10,      // attributes that the file does not keep
  ExtraComponent = 11,         // a shape with a second component: closeFile fails
  FileFailure = 20,            // a file could not be opened or written: path and reason
  FileExists = 21,             // saveTo refused an existing file: the overwrite flag
  CloseIgnored = 22            // closeFile with another path than saveTo's did nothing
};

struct DiagnosticRecord {
  Diagnostic kind;
  // Warning: a WarningCode; Progress: 0.
  std::int32_t code;
  // The index of the object concerned, or all bits set for none.
  std::uint64_t object;
  // One readable sentence; valid during the call only.
  const char* text;
  // Progress: bytes of numbers ("Heavy Data") handed to the file so far,
  // and expected in all; done never passes total, and the last record of a
  // closeFile() that succeeds has done == total. 0 for a Warning.
  std::uint64_t done;
  std::uint64_t total;
};

// Called on the host's own thread, during the scene's calls. An exception
// thrown here is not swallowed: it leaves the scene's call that made the
// record, as a failure of the library would (the README tells the state of
// the file then).
using DiagnosticHandler = void (*)(const DiagnosticRecord& record, void* user);

class DOVWRITER_API Scene_V2 : public Scene_V1 {
 public:
  Scene_V2();
  explicit Scene_V2(const char* title);

  // Before closeFile(); a call once building has started raises code 19,
  // options out of their ranges raise code 16.
  void setWriteOptions(const WriteOptions& options);

  // Like setValues(), but the library keeps the pointer instead of a copy:
  // the host keeps the memory valid and unchanged until closeFile() returns
  // or the scene is destroyed. The file is the same as with setValues().
  template <class T>
  void lendValues(const Identifier& array, const T* values, std::uint64_t count);

  // Sends warnings and progress to `handler`, with `user` handed back; a
  // null handler turns the channel off.
  void setDiagnostics(DiagnosticHandler handler, void* user);
};

}  // namespace Dov
}  // namespace Kel

#endif
