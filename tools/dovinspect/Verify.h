#ifndef DOVINSPECT_VERIFY_H
#define DOVINSPECT_VERIFY_H

#include <string>
#include <vector>

namespace DovInspect {

// Every violation of the format in the model file at `path`, one line
// each, as `dovinspect verify` prints them; empty for a sound file.
std::vector<std::string> VerifyModel(const std::string& path);

}  // namespace DovInspect

#endif
