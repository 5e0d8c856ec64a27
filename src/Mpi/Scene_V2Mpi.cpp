// The MPI scene handle: a part scene whose group is the ranks of a
// communicator.

#include <DovWriter/DovWriterMpi.h>

#include "Mpi/MpiGroup.h"

namespace Kel {
namespace Dov {

Scene_V2Mpi::Scene_V2Mpi(MPI_Comm comm, const char* title)
    : Scene_V2Part(title, new MpiGroup(comm)) {}

}  // namespace Dov
}  // namespace Kel
