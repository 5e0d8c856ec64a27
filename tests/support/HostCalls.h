#ifndef DOVWRITER_TESTS_SUPPORT_HOSTCALLS_H
#define DOVWRITER_TESTS_SUPPORT_HOSTCALLS_H

// Test support that needs only the public headers, so that every test
// program can share it, the ones that link only the installed libraries
// too: the array objects a host makes, a refusal a call must raise, a
// file's bytes, and a limit on how large files may grow.

#include <gtest/gtest.h>

#include <DovWriter/DovWriter.h>
#include <sys/resource.h>

#include <csignal>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

namespace testsupport {

// An array object holding `values`, with "Dimension" set before the values.
template <class T>
Kel::Dov::Identifier makeArray(Kel::Dov::Scene_V1& scene, const std::vector<T>& values,
                               unsigned char dimension = 1) {
  const Kel::Dov::Identifier array = scene.createObject(Kel::Dov::ArrayObject);
  scene.setDimension(array, dimension);
  scene.setValues<T>(array, values.data(), dimension == 0 ? 0 : values.size() / dimension);
  return array;
}

// The same, with the values lent instead of copied where `lend` is set:
// they must then live until the file is done.
template <class T>
Kel::Dov::Identifier makeArray(Kel::Dov::Scene_V2& scene, const std::vector<T>& values,
                               unsigned char dimension, bool lend) {
  if (!lend) return makeArray(static_cast<Kel::Dov::Scene_V1&>(scene), values, dimension);
  const Kel::Dov::Identifier array = scene.createObject(Kel::Dov::ArrayObject);
  scene.setDimension(array, dimension);
  scene.lendValues(array, values.data(), values.size() / dimension);
  return array;
}

// Runs `call`, expecting a refusal with `code` whose description holds
// `mention`.
inline void expectRefusal(const std::function<void()>& call, int code,
                          const std::string& mention = std::string()) {
  try {
    call();
    ADD_FAILURE() << "no exception, expected code " << code;
  } catch (const Kel::Util::Exception& error) {
    EXPECT_EQ(error.GetCode(), code);
    EXPECT_NE(std::string(error.GetDescription()).find(mention), std::string::npos)
        << error.GetDescription();
  }
}

inline std::vector<unsigned char> fileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::vector<unsigned char>(std::istreambuf_iterator<char>(in),
                                    std::istreambuf_iterator<char>());
}

// While it lives, this process's writes beyond `bytes` into any file fail
// (EFBIG) instead of ending the process (SIGXFSZ).
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &saved);
    rlimit limited = saved;
    limited.rlim_cur = bytes;
    set = setrlimit(RLIMIT_FSIZE, &limited) == 0;
  }
  ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &saved); }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

  bool set = false;

 private:
  rlimit saved{};
};

}  // namespace testsupport

#endif
