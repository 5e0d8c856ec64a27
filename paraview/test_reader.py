"""The ParaView reader on the demo model, headless, with the plugin loaded
through PV_PLUGIN_PATH as the README tells. Run with pvpython:

    PV_PLUGIN_PATH=.../DovReader pvpython test_reader.py plate_model.dov
"""
import sys

from paraview import servermanager
from paraview.simple import OpenDataFile

failures = []


def expect(condition, what):
    if not condition:
        failures.append(what)
        print("FAILED: " + what)


def blocks(reader, time):
    reader.UpdatePipeline(time)
    data = servermanager.Fetch(reader)
    return {data.GetMetaData(i).Get(data.NAME()): data.GetBlock(i)
            for i in range(data.GetNumberOfBlocks())}


def main(model):
    reader = OpenDataFile(model)
    expect(reader is not None and reader.GetXMLName() == "DovReader", "the .dov opens with DovReader")
    if failures:
        return
    times = list(reader.TimestepValues)
    expect(times == [round(0.1 * k, 1) for k in range(1, 11)], "time steps 0.1 to 1: %s" % times)
    expect(list(reader.PointArrays) == ["Displacement", "Stress"], "point arrays %s" % reader.PointArrays)

    first, last = blocks(reader, 0.1), blocks(reader, 1.0)
    names = sorted(first)
    plate = ["Bracket assembly/Plate/%s/%s" % (s, s) for s in ("Boss", "Flange", "Web")]
    bolts = ["Bracket assembly/Bolt %d/Bolt/Bolt" % n for n in (1, 2)]
    expect(names == sorted(bolts + plate), "block names %s" % names)

    flange = first[plate[1]]
    expect(flange.GetNumberOfPoints() == 100000, "the plate's points")
    expect({flange.GetCellType(c) for c in range(flange.GetNumberOfCells())} == {9}, "quads")
    arrays = [flange.GetPointData().GetArrayName(i) for i in range(flange.GetPointData().GetNumberOfArrays())]
    expect(arrays == ["Node Ids", "Displacement", "Stress"], "point data %s" % arrays)
    color = flange.GetFieldData().GetArray("Diffuse Color").GetTuple3(0)
    expect(abs(color[0] - 0.85) < 1e-6, "the flange's colour %s" % (color,))
    expect(flange.GetFieldData().GetArray("Visibility").GetValue(0) == 1, "visible")
    step = flange.GetFieldData().GetAbstractArray("Instance Value")
    expect(step is not None and step.GetValue(0) == "0.1", "the step's instance value")

    # The two bolts are one geometry placed twice: 20 apart along x.
    one, two = (first[name].GetBounds() for name in bolts)
    expect([b - a for a, b in zip(one, two)] == [20, 20, 0, 0, 0, 0], "bolt bounds %s %s" % (one, two))
    expect(first[bolts[0]].GetCellType(0) == 12, "a bolt is a hexahedron")

    early = first[plate[1]].GetPointData().GetArray("Stress").GetRange()
    late = last[plate[1]].GetPointData().GetArray("Stress").GetRange()
    expect(abs(late[1] - 10 * early[1]) < 1e-3, "stress grows with the load: %s %s" % (early, late))

    reader.PointArrays = ["Displacement"]
    arrays = blocks(reader, 1.0)[plate[1]].GetPointData()
    expect(arrays.GetArray("Stress") is None and arrays.GetArray("Displacement") is not None,
           "a result left out when not selected")


main(sys.argv[1])
if failures:
    sys.exit("%d checks failed" % len(failures))
print("all checks passed")
