#include "Kel/Tmf/Block.h"

#include <cstdlib>

namespace KelTmf {

const std::string EmptyBlockName("\vEmpty Block ");
const std::string IndexBlockName("\vIndex Block ");

void Block::Release() {
  std::free(data);
  data = nullptr;
}

}  // namespace KelTmf
