#include <DovWriter/Version.h>

namespace Kel {
namespace Dov {

const char* libraryVersion() { return DOVWRITER_VERSION_STRING; }

}  // namespace Dov
}  // namespace Kel
