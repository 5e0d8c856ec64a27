#include <hdf5.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "Measure.h"
#include "Writers.h"

namespace bench {

namespace {

void Check(herr_t status, const char* what) {
  if (status < 0) throw std::runtime_error(std::string("HDF5: ") + what + " failed");
}

hid_t CheckId(hid_t id, const char* what) {
  if (id < 0) throw std::runtime_error(std::string("HDF5: ") + what + " failed");
  return id;
}

template <class T>
hid_t MemoryType();
template <>
hid_t MemoryType<float>() { return H5T_NATIVE_FLOAT; }
template <>
hid_t MemoryType<std::uint32_t>() { return H5T_NATIVE_UINT32; }

template <class T>
hid_t FileType();
template <>
hid_t FileType<float>() { return H5T_IEEE_F32LE; }
template <>
hid_t FileType<std::uint32_t>() { return H5T_STD_U32LE; }

class Hdf5File {
 public:
  Hdf5File(const std::string& path, const Hdf5Options& options, Stopwatch& watch)
      : options(options), watch(watch) {
    file = watch.Time([&] {
      return CheckId(H5Fcreate(path.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT), "create");
    });
  }
  ~Hdf5File() {
    if (file >= 0) H5Fclose(file);
  }

  void Close() {
    watch.Time([&] { Check(H5Fclose(file), "close"); });
    file = -1;
  }

  hid_t Group(const char* name) {
    return watch.Time([&] {
      return CheckId(H5Gcreate2(file, name, H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT), name);
    });
  }
  void CloseGroup(hid_t group) {
    watch.Time([&] { Check(H5Gclose(group), "group close"); });
  }

  // One array of rows of `width` values, chunked by whole rows, with the
  // shuffle and deflate(6) filters. The benchmark's copy is freed afterwards.
  template <class T>
  void Write(hid_t parent, const std::string& name, std::vector<T> values, hsize_t width) {
    watch.Time([&] { WriteDataset(parent, name, values, width); });
    std::vector<T>().swap(values);
  }

 private:
  template <class T>
  void WriteDataset(hid_t parent, const std::string& name, const std::vector<T>& values,
                    hsize_t width) {
    const hsize_t rows = values.size() / width;
    const hsize_t dims[2] = {rows, width};
    const hsize_t rowsPerChunk =
        std::max<hsize_t>(1, std::min<hsize_t>(rows, options.chunkBytes / (sizeof(T) * width)));
    const hsize_t chunk[2] = {rowsPerChunk, width};
    const hid_t space = CheckId(H5Screate_simple(2, dims, nullptr), "space");
    const hid_t properties = CheckId(H5Pcreate(H5P_DATASET_CREATE), "properties");
    if (rows > 0) {
      Check(H5Pset_chunk(properties, 2, chunk), "chunk");
      Check(H5Pset_shuffle(properties), "shuffle");
      Check(H5Pset_deflate(properties, 6), "deflate");
    }
    const hid_t dataset = CheckId(H5Dcreate2(parent, name.c_str(), FileType<T>(), space,
                                             H5P_DEFAULT, properties, H5P_DEFAULT),
                                  name.c_str());
    if (rows > 0)
      Check(H5Dwrite(dataset, MemoryType<T>(), H5S_ALL, H5S_ALL, H5P_DEFAULT, values.data()),
            "write");
    Check(H5Dclose(dataset), "dataset close");
    Check(H5Pclose(properties), "properties close");
    Check(H5Sclose(space), "space close");
  }

  Hdf5Options options;
  Stopwatch& watch;
  hid_t file = -1;
};

}  // namespace

WriteFigures WriteHdf5(const ModelShape& shape, const std::string& path,
                       const Hdf5Options& options) {
  Stopwatch watch;
  {
    Hdf5File file(path, options, watch);
    const hid_t mesh = file.Group("/Part");
    file.Write(mesh, "Connectivity", Connectivity(shape), shape.nodesPerCell);
    file.Write(mesh, "Coordinates", Coordinates(shape), 3);
    file.Write(mesh, "Node Ids", NodeIds(shape), 1);
    for (std::uint32_t state = 0; state < shape.states; ++state) {
      const hid_t group = file.Group(("/Part/State " + std::to_string(state)).c_str());
      file.Write(group, "Displacement", VectorResult(shape, state), 3);
      file.Write(group, "Pressure", ScalarResult(shape, state), 1);
      file.CloseGroup(group);
    }
    const hid_t sets = file.Group("/Part/Element Sets");
    for (std::uint64_t set = 0; set < shape.SetCount(); ++set)
      file.Write(sets, "Set " + std::to_string(set + 1), ElementSet(shape, set), 1);
    file.CloseGroup(sets);
    file.CloseGroup(mesh);
    file.Close();
  }
  return FinishedWrite(watch, path);
}

}  // namespace bench
