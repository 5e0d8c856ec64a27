#ifndef DOVWRITER_KEL_DOV_DATASETLAYOUT_H
#define DOVWRITER_KEL_DOV_DATASETLAYOUT_H

// The stored form of a dataset: N 4-byte values laid out so that bytes of
// equal significance lie together, which is what lets zlib shrink arrays of
// floats and indices.
//
//   width 0: the values, least significant byte first.
//   width 1: byte planes over all values: byte 0 of every value, then
//            byte 1, byte 2, byte 3.
//   width w: n = N / w items; component k (values k, k + w, ...) goes to
//            byte 4nk as byte planes over its n values; the N - nw values
//            that do not fill an item follow in order, unchanged.
//
// Every value is written exactly once, straight into its final place, so
// the block needs no working copy of the dataset.

#include <algorithm>
#include <cstdint>

#include "Kel/Util/Coding.h"

namespace KelDov {

inline std::uint32_t DatasetWordBits(std::uint32_t value) { return value; }
inline std::uint32_t DatasetWordBits(float value) { return Kel::Util::FloatBits(value); }

// `out` receives 4 * count bytes; `values[i]` gives a u32 or a float.
// `values` comes by value, for the reason given at EncodePlaneRun.
template <class Values>
void EncodeDataset(unsigned char* out, const Values values, std::uint64_t count,
                   std::uint8_t width) {
  if (width == 0) {
    for (std::uint64_t i = 0; i < count; ++i)
      Kel::Util::EncodeFixed32(out + 4 * i, DatasetWordBits(values[i]));
    return;
  }
  const std::uint64_t items = count / width;
  // Items go in tiles small enough to stay in cache while each component
  // takes its values from them, so the values are read from memory once
  // and not once per component.
  const std::uint64_t tile = 2048;
  for (std::uint64_t first = 0; first < items; first += tile) {
    const std::uint64_t end = first + tile < items ? first + tile : items;
    for (std::uint64_t k = 0; k < width; ++k) {
      unsigned char* plane = out + 4 * items * k;
      for (std::uint64_t i = first; i < end; ++i) {
        const std::uint32_t bits = DatasetWordBits(values[k + i * width]);
        plane[i] = static_cast<unsigned char>(bits);
        plane[items + i] = static_cast<unsigned char>(bits >> 8);
        plane[2 * items + i] = static_cast<unsigned char>(bits >> 16);
        plane[3 * items + i] = static_cast<unsigned char>(bits >> 24);
      }
    }
  }
  for (std::uint64_t i = items * width; i < count; ++i)
    Kel::Util::EncodeFixed32(out + 4 * i, DatasetWordBits(values[i]));
}

// Byte `shift / 8` of values `component + i * width` for i from `first`
// to `last`. `values` comes by value: through a reference, a write to
// `out` could change what it refers to, and the compiler would neither
// keep it in a register nor make vector code of the loop (1.6 times the
// speed for single values).
template <class Values>
void EncodePlaneRun(unsigned char* out, const Values values, std::uint64_t width,
                    std::uint64_t component, unsigned shift, std::uint64_t first,
                    std::uint64_t last) {
  for (std::uint64_t i = first; i < last; ++i)
    out[i - first] =
        static_cast<unsigned char>(DatasetWordBits(values[component + i * width]) >> shift);
}

// Bytes `begin` to `end` of the stored form above into `out`, for a
// dataset that spans blocks: each piece is made straight from the values,
// with no working copy of the whole dataset. A plane is read for every
// byte plane it holds, which costs more reading than the whole form.
template <class Values>
void EncodeDatasetRange(unsigned char* out, const Values& values, std::uint64_t count,
                        std::uint8_t width, std::uint64_t begin, std::uint64_t end) {
  if (begin == 0 && end == 4 * count) return EncodeDataset(out, values, count, width);
  const std::uint64_t items = width != 0 ? count / width : 0;
  const std::uint64_t planesEnd = 4 * items * width;
  std::uint64_t at = begin;
  while (at < end && at < planesEnd) {
    // One run within byte plane `plane % 4` of component `plane / 4`.
    const std::uint64_t plane = at / items;
    const std::uint64_t first = at % items;
    const std::uint64_t last = std::min(items, first + (end - at));
    EncodePlaneRun(out, values, width, plane / 4, 8 * static_cast<unsigned>(plane % 4), first,
                   last);
    out += last - first;
    at += last - first;
  }
  // The values behind the items (all of them for width 0) stand as they are.
  for (; at < end; ++at)
    *out++ = static_cast<unsigned char>(DatasetWordBits(values[at / 4]) >> (8 * (at % 4)));
}

}  // namespace KelDov

#endif
