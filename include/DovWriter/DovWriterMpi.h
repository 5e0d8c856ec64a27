#ifndef DOVWRITER_DOVWRITERMPI_H
#define DOVWRITER_DOVWRITERMPI_H

// One model file written by all ranks of an MPI job; a library of its own,
// DovWriter::Mpi (libdovwriter_mpi), over the core library.
//
// Every rank builds its part of the scene with the ordinary Scene_V2 calls;
// the file holds, under rank 0's root, the components of every rank's root
// in rank order. Collective: the constructor, saveTo() and closeFile() (the
// same path on every rank). Everything else is local to the rank.

#include <mpi.h>

#include "DovWriter.h"
#include "ScenePart.h"

namespace Kel {
namespace Dov {

class DOVWRITER_API Scene_V2Mpi : public Scene_V2Part {
 public:
  // The scene talks on a duplicate of `comm`, so that its messages never
  // meet the host's.
  Scene_V2Mpi(MPI_Comm comm, const char* title);
};

}  // namespace Dov
}  // namespace Kel

#endif
