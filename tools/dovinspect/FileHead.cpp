#include "FileHead.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "Cli.h"
#include "ValueNames.h"

namespace DovInspect {

const char kFormatVersion[] = "1.1";

namespace {

const char kSignature[8] = {'\x89', 'T', 'M', 'F', '\r', '\n', '\x1A', '\n'};
const std::size_t kHeadSize = 12;

std::string ReadHead(const std::string& path, std::string& failure) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    failure = std::string("cannot open: ") + std::strerror(errno);
    return "";
  }
  std::string head(kHeadSize, '\0');
  in.read(&head[0], static_cast<std::streamsize>(head.size()));
  head.resize(static_cast<std::size_t>(in.gcount()));
  return head;
}

}  // namespace

std::optional<std::string> WhyNotAModelFile(const std::string& path) {
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) return "not a model file: it is a directory";
  std::string failure;
  const std::string head = ReadHead(path, failure);
  if (!failure.empty()) return failure;
  if (head.empty()) return "not a model file: it is empty";
  if (head.compare(0, sizeof kSignature, kSignature, sizeof kSignature) != 0) {
    return "not a model file: it does not begin with the signature of one (it begins with \"" +
           Readable(head.substr(0, 8)) + "\")";
  }
  if (head.size() < kHeadSize) return "not a model file: it ends inside the 12-byte head";
  const std::string version = HeadVersion(path);
  if (version != kFormatVersion) {
    return "a model file of format version \"" + Readable(version) +
           "\", which this tool does not read (it reads " + kFormatVersion + ")";
  }
  return std::nullopt;
}

void RequireModelFile(const std::string& path) {
  if (std::optional<std::string> why = WhyNotAModelFile(path)) throw ToolError(path + ": " + *why);
}

std::string HeadVersion(const std::string& path) {
  std::string failure;
  const std::string head = ReadHead(path, failure);
  if (head.size() < kHeadSize) return "";
  const std::string version = head.substr(8, 4);
  return version.substr(0, version.find('\0'));
}

}  // namespace DovInspect
