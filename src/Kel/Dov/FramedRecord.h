#ifndef DOVWRITER_KEL_DOV_FRAMEDRECORD_H
#define DOVWRITER_KEL_DOV_FRAMEDRECORD_H

// A record that states its own size, so that a reader can step over a
// version it does not know: u32 size (counting itself), the version as
// text, then the fields. Everything goes into the one block in hand.

#include <cstdint>
#include <string>

#include "Kel/Tmf/Block.h"

namespace KelDov {

// Returns the record's size. The size is patched in place; the block's
// length stays where the fields left it.
template <class PutFields>
std::uint32_t PutFramedRecord(KelTmf::Block& block, const std::string& version,
                              PutFields&& putFields) {
  const std::uint32_t start = block.position;
  block.Put(std::uint32_t(0));
  block.Put(version);
  putFields(block);
  const std::uint32_t end = block.position;
  const std::uint32_t size = end - start;
  block.SetPosition(start);
  block.Put(size);
  block.SetPosition(end);
  return size;
}

// Version-dependent fields: a field that `introducedIn` brought is present
// unless `version` is one of the versions before it. Exact string
// comparison, no numeric reading.
bool RecordHasField(const std::string& version, const std::string& introducedIn);

}  // namespace KelDov

#endif
