"""Reads VTK XML files with VTK's own reader and prints what the tests
compare, one tab-separated record per line:

  file <path>
  points <count> / cells <count>
  coordinates / celltypes / cellsizes / cellnodes <values...>
  pointdata|celldata <name> <components> <type> <values...>

A .pvd collection is read as XML and gives 'dataset <time> <part> <file>'."""
import sys
import xml.etree.ElementTree as ElementTree

import vtk


def line(*fields):
    print("\t".join(str(f) for f in fields))


def values(array):
    # Without numpy: VTK's arrays hand out their values one by one.
    return " ".join(repr(array.GetValue(i)) for i in range(array.GetNumberOfValues()))


def arrays(kind, data):
    for i in range(data.GetNumberOfArrays()):
        array = data.GetArray(i)
        line(kind, array.GetName(), array.GetNumberOfComponents(),
             array.GetDataTypeAsString(), values(array))


def read_vtu(path):
    reader = vtk.vtkXMLUnstructuredGridReader()
    reader.SetFileName(path)
    reader.Update()
    if reader.GetErrorCode() != 0:
        sys.exit("reader error %d on %s" % (reader.GetErrorCode(), path))
    grid = reader.GetOutput()
    line("file", path)
    line("points", grid.GetNumberOfPoints())
    line("cells", grid.GetNumberOfCells())
    if grid.GetPoints() is not None:
        line("coordinates", values(grid.GetPoints().GetData()))
    types, sizes, nodes = [], [], []
    for c in range(grid.GetNumberOfCells()):
        ids = grid.GetCell(c).GetPointIds()
        types.append(grid.GetCellType(c))
        sizes.append(ids.GetNumberOfIds())
        nodes.extend(ids.GetId(k) for k in range(ids.GetNumberOfIds()))
    line("celltypes", " ".join(map(str, types)))
    line("cellsizes", " ".join(map(str, sizes)))
    line("cellnodes", " ".join(map(str, nodes)))
    arrays("pointdata", grid.GetPointData())
    arrays("celldata", grid.GetCellData())


def read_pvd(path):
    root = ElementTree.parse(path).getroot()
    line("file", path)
    for dataset in root.iter("DataSet"):
        line("dataset", dataset.get("timestep"), dataset.get("part"), dataset.get("file"))


for argument in sys.argv[1:]:
    if argument.endswith(".pvd"):
        read_pvd(argument)
    else:
        read_vtu(argument)
