#ifndef DOVWRITER_TESTS_READER_SCENETESTSUPPORT_H
#define DOVWRITER_TESTS_READER_SCENETESTSUPPORT_H

// Files for the scene reader's tests: saved scenes, and files whose streams
// a test lays down by hand.

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "Kel/Dov/Tree.h"
#include "reader/Container.h"
#include "reader/Scene.h"
#include "../Kel/Dov/StreamBytes.h"

namespace SceneTest {

using DovTest::Bytes;
using DovTest::TempPath;
typedef std::vector<std::pair<std::string, Bytes>> Streams;

// Every stream of a file, in the order of their first blocks.
inline Streams ReadAllStreams(const std::string& path) {
  const DovReader::Container container = DovReader::Container::Open(path);
  Streams streams;
  for (const std::string& name : container.StreamNames())
    streams.emplace_back(name, container.ReadStream(name));
  return streams;
}

// A container file holding exactly `streams`, each compressed.
inline void WriteStreams(const std::string& path, const Streams& streams) {
  KelDov::Tree tree;  // only for the head; none of its own streams is put
  tree.SetStreamFile(path, true);
  KelTmf::Index& index = tree.GetFile().index;
  for (const auto& stream : streams) {
    index.Put(stream.first, stream.second.data(), stream.second.size());
    index.SetBlockFlags(stream.first, KelTmf::BlockFlagCompress);
  }
  index.WriteAllBuffersToFileStream(tree.GetFile().stream);
  tree.GetFile().CloseFile();
}

inline Bytes& StreamIn(Streams& streams, const std::string& name) {
  for (auto& stream : streams)
    if (stream.first == name) return stream.second;
  streams.emplace_back(name, Bytes());
  return streams.back().second;
}

// Opens and reads the scene in one go, as a caller that only wants to know
// whether the file is sound does.
inline void ReadScene(const std::string& path) {
  const DovReader::Container container = DovReader::Container::Open(path);
  DovReader::Scene::Read(container);
}

}  // namespace SceneTest

#endif
