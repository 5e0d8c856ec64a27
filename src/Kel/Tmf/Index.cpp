#include "Kel/Tmf/Index.h"

#include <cstdlib>

namespace KelTmf {

Index::~Index() {
  for (Block& block : blocks) block.Release();
}

}  // namespace KelTmf
