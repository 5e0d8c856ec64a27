#ifndef DOVFUZZ_FUZZSUPPORT_H
#define DOVFUZZ_FUZZSUPPORT_H

// What the fuzz targets share: a scratch file per process (the reader and
// the tool work on paths), the full read of a file through our reader, every
// dovinspect command run in-process, and the packing of scene streams into a
// sound container.

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace DovFuzz {

// A path under $TMPDIR (or /tmp) that holds the process id, so that
// parallel fuzzing jobs never share it; removed when the process ends.
const std::string& ScratchPath(const std::string& name);
void WriteBytes(const std::string& path, const std::uint8_t* data, std::size_t size);

// Walks the whole file: the container and its verification, every stream,
// the scene, every depth and every variable's values. A damaged file may
// only ever raise DovReader::ReadError, which is caught here.
void ReadEverything(const std::string& path);

// Runs verify, info, tree, vars, check (as JSON), diff against itself,
// dump (of variable `variable` of entry `entry`) and export on the file,
// output discarded. Aborts if a command exits with another status than 0
// or 1 (or 3 for check's warnings), or if a file that verify calls sound
// fails in info, tree or vars, or differs from itself.
void RunEveryCommand(const std::string& path, unsigned entry, unsigned variable);

// Aborts the process with a message; libFuzzer then keeps the input.
[[noreturn]] void Fail(const std::string& what);

// The scene streams in the order in which a packed input holds them, each
// ended by kStreamEnd (the last one by the end of the input).
extern const char* const kSceneStreams[6];
extern const char kStreamEnd[4];

using Streams = std::vector<std::pair<std::string, std::string>>;
// Splits an input into the streams of kSceneStreams; empty ones are left
// out, "Heavy Data" comes first, as in the writer's files.
Streams SplitStreams(const std::uint8_t* data, std::size_t size);
// The reverse: one input made of the streams, by their names.
std::string JoinStreams(const Streams& streams);
// Writes a container file that holds exactly `streams` (at most 19), each
// as one compressed block.
void PackStreams(const std::string& path, const Streams& streams);

}  // namespace DovFuzz

#endif
