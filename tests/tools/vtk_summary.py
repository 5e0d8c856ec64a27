"""Reads VTK XML files with VTK's own reader and prints what the tests
compare, one tab-separated record per line after 'file <path>'. A .pvd
collection is read as XML."""
import sys
import xml.etree.ElementTree as ElementTree

import vtk


def line(*fields):
    print("\t".join(str(f) for f in fields))


def values(array):
    # Without numpy: VTK's arrays hand out their values one by one.
    return " ".join(repr(array.GetValue(i)) for i in range(array.GetNumberOfValues()))


def read_vtu(path):
    reader = vtk.vtkXMLUnstructuredGridReader()
    reader.SetFileName(path)
    reader.Update()
    if reader.GetErrorCode() != 0:
        sys.exit("reader error %d on %s" % (reader.GetErrorCode(), path))
    grid = reader.GetOutput()
    line("counts", grid.GetNumberOfPoints(), grid.GetNumberOfCells())
    if grid.GetPoints() is not None:
        line("coordinates", values(grid.GetPoints().GetData()))
    types, nodes = [], []
    for c in range(grid.GetNumberOfCells()):
        # GetCell hands out one shared cell: take its ids before the next.
        ids = grid.GetCell(c).GetPointIds()
        types.append(str(grid.GetCellType(c)))
        nodes.extend(str(ids.GetId(k)) for k in range(ids.GetNumberOfIds()))
    line("celltypes", " ".join(types))
    line("cellnodes", " ".join(nodes))
    for kind, data in (("pointdata", grid.GetPointData()), ("celldata", grid.GetCellData())):
        for i in range(data.GetNumberOfArrays()):
            array = data.GetArray(i)
            line(kind + " " + array.GetName(), array.GetNumberOfComponents(), values(array))


for path in sys.argv[1:]:
    line("file", path)
    if path.endswith(".pvd"):
        for n, dataset in enumerate(ElementTree.parse(path).getroot().iter("DataSet")):
            line("dataset %d" % n, dataset.get("timestep"), dataset.get("part"),
                 dataset.get("file"))
    else:
        read_vtu(path)
