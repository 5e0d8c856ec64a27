#ifndef DOVWRITER_SCENEPART_H
#define DOVWRITER_SCENEPART_H

// A scene that is one part of a model file written by several processes
// together, each from its own scene. The library itself knows nothing of
// how the processes talk: a PartGroup carries the few collective steps it
// needs, and a separate library implements it (DovWriterMpi.h for MPI).

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "Export.h"
#include "Scene_V2.h"

struct dov_scene;

namespace Kel {
namespace Dov {

// The processes that write one file together, seen from one of them. Every
// operation but rank() and size() is collective: every process calls it, in
// the same order. None throws; the file operations return an empty text for
// success, else what went wrong.
class DOVWRITER_API PartGroup {
 public:
  virtual ~PartGroup();
  virtual int rank() const = 0;
  virtual int size() const = 0;
  // Replaces each of `count` values by its sum over the lower ranks (0 on
  // rank 0).
  virtual void sumOverLower(std::uint64_t* values, int count) = 0;
  // The `count` values of every rank, rank after rank.
  virtual std::vector<std::uint64_t> gatherAll(const std::uint64_t* values, int count) = 0;
  // The bytes of every rank, joined in rank order, on rank 0; empty on the
  // others.
  virtual std::vector<unsigned char> gatherAtFirst(const std::vector<unsigned char>& bytes) = 0;
  // Rank `from`'s bytes, on every rank.
  virtual void broadcast(std::vector<unsigned char>& bytes, int from) = 0;
  // The lowest rank on which `flagged` is true, on every rank; size() where
  // it is true on none. How the ranks agree on which failure counts.
  int firstFlagged(bool flagged) {
    const std::uint64_t flag = flagged ? 1 : 0;
    const std::vector<std::uint64_t> flags = gatherAll(&flag, 1);
    return static_cast<int>(std::find(flags.begin(), flags.end(), 1u) - flags.begin());
  }
  // A run of bytes of this rank's share of the file, and where it goes.
  struct Piece {
    std::uint64_t position;
    const unsigned char* bytes;
    std::uint64_t count;
  };
  // Opens the file that rank 0 has created, on every rank. Returns the
  // same text on every rank; where it is not empty, the file is not open.
  virtual std::string openShared(const char* path) = 0;
  // Not collective: writes one piece (less than 2 GiB) into the open file
  // now, from this rank alone.
  virtual std::string writeNow(const Piece& piece) = 0;
  // Writes every rank's pieces (each rank's in ascending places, none of
  // them 2 GiB or more) into the open file in one collective write, and
  // closes it. Returns the same text on every rank.
  virtual std::string writeShared(const std::vector<Piece>& pieces) = 0;
  // Closes the open file, if it is open, without writing.
  virtual void closeShared() = 0;
  // Not collective: sends `count` values to every other rank without
  // waiting for them to be taken.
  virtual void tell(const std::uint64_t* values, int count) = 0;
  // Not collective: takes `count` values that another rank sent by tell(),
  // those of one sender in the order sent, and sets `from` to that rank.
  // False where none has come; with `wait`, waits for one (without holding
  // a processor). Every value told must be taken by its receivers: closing
  // the shared file waits until it is.
  virtual bool hear(int& from, std::uint64_t* values, int count, bool wait) = 0;
};

// Everything of Scene_V2; saveTo() and closeFile() are collective over the
// group, with the same path on every process. The file holds, under the
// root of rank 0's scene, the components of every rank's root in rank
// order. Only the Fast encoding can be written this way.
class DOVWRITER_API Scene_V2Part : public Scene_V2 {
 public:
  virtual ~Scene_V2Part();

  // Rank 0 creates the file and writes its head; a failure there raises on
  // every rank.
  void saveTo(const char* path, const char* unused = nullptr, bool unusedFlag = false,
              bool overwrite = false);
  // Each rank builds and compresses its own part and writes its blocks at
  // their places; rank 0 writes the tree, the index and the rest. If any
  // rank fails, every rank raises the failure of the lowest failing rank.
  void closeFile(const char* path);

 protected:
  // Takes `group`, which is deleted with the scene.
  Scene_V2Part(const char* title, PartGroup* group);

 private:
  PartGroup* group;
};

// For a library that offers a part scene through the C interface: the
// scene that `make` returns, owned from then on, as a C scene. Returns 0 or
// the code of the failure, which becomes the thread's last error as for
// every function of the C interface.
DOVWRITER_API int makeCScene(const std::function<Scene_V2Part*()>& make, dov_scene** scene);

}  // namespace Dov
}  // namespace Kel

#endif
