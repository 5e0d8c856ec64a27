#include "Commands.h"

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  return DovInspect::RunTool(args, std::cout, std::cerr);
}
