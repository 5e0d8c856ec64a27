#ifndef DOVINSPECT_FILEHEAD_H
#define DOVINSPECT_FILEHEAD_H

// The first look at any file a command is given: is it a model file that
// this tool reads? A file of another kind gets one line that says so and
// why, instead of whatever its bytes would make of an index.

#include <optional>
#include <string>

namespace DovInspect {

// The format version that the tool reads.
extern const char kFormatVersion[];

// Why `path` is no model file that the tool reads, in one line without the
// path ("not a model file: it is empty"); nothing for a file whose head is
// that of a model file of the version the tool reads.
std::optional<std::string> WhyNotAModelFile(const std::string& path);

// Throws ToolError "PATH: <why>" where WhyNotAModelFile has a reason.
void RequireModelFile(const std::string& path);

// The version text of the head: the four bytes behind the signature, up to
// the first zero byte.
std::string HeadVersion(const std::string& path);

}  // namespace DovInspect

#endif
