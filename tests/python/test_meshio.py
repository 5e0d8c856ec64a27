import meshio
import numpy as np
import pytest

import dovwriter as dw

PLATE = "Bracket assembly/Plate/Flange/Flange"


def test_demo_as_meshio(plate):
    with dw.open(plate) as f:
        whole = dw.to_meshio(f)
        stored = sum(len(g.read("Polylength")) for g in f.geometries())
        assert sum(len(block) for block in whole.cells) == stored
        assert {block.type for block in whole.cells} == {"quad", "hexahedron"}
        assert len(whole.points) == 100000 + 2 * 8  # the plate's points once, each bolt's
        assert whole.cell_sets.keys() == {g.path for g in f.geometries()}

        bolts = [f.geometry(f"Bracket assembly/Bolt {i}/Bolt/Bolt") for i in (1, 2)]
        one, two = (dw.to_meshio(bolt) for bolt in bolts)
        np.testing.assert_allclose(one.points - bolts[0].read("Coordinates"),
                                   np.tile([10, 62.25, 0], (8, 1)))
        np.testing.assert_allclose(two.points - one.points, np.tile([20, 0, 0], (8, 1)))
        assert [len(np.concatenate(whole.cell_sets[b.path])) for b in bolts] == [1, 1]

        flange = f.geometry(PLATE)
        for time, load in ((0.5, 0.5), (None, 1)):
            mesh = dw.to_meshio(flange, time=time)
            np.testing.assert_array_equal(mesh.point_data["Displacement"],
                                          flange.read("Displacement", Load=load))
        assert mesh.point_data["Node Ids"][0] == 1000000
        assert len(mesh.cells[0]) == len(flange.read("Polylength"))
        with pytest.raises(ValueError, match="0.1, 0.2"):
            dw.to_meshio(flange, time=7)

    read = meshio.read(plate)
    np.testing.assert_array_equal(read.points, whole.points)
    assert [(b.type, b.data.tolist()) for b in read.cells] == \
        [(b.type, b.data.tolist()) for b in whole.cells]
    for name, values in whole.point_data.items():
        np.testing.assert_array_equal(read.point_data[name], values)
    np.testing.assert_array_equal(np.concatenate(read.cell_data["Element Set"]),
                                  np.concatenate(whole.cell_data["Element Set"]))
    with pytest.raises(NotImplementedError, match="dovwriter.Scene"):
        meshio.write(plate.with_name("copy.dov"), read)


def test_mixed_cells_become_meshio_blocks(tmp_path):
    """Triangles, flat polygons of 5 and 6 nodes, a tetrahedron and a flat quad: runs of one
    type and size make one block each, and cell data follows its cells."""
    s = dw.Scene()
    root, mesh = s.create_object(dw.GroupObject), s.create_object(dw.MeshObject)
    xyz, cells, sizes, part = (s.create_object(dw.ArrayObject) for _ in range(4))
    s.set_coordinates(mesh, xyz)
    s.set_values(xyz, [[0, 0, 0], [1, 0, 0], [1, 1, 0], [0, 1, 0], [0.5, 1.5, 0], [0, 0, 1],
                       [-0.5, 0.5, 0]], dtype=np.float32)
    s.set_connectivity(mesh, cells, sizes)
    s.set_values(cells, [0, 1, 2, 0, 2, 3, 0, 1, 2, 4, 3, 0, 1, 2, 4, 3, 6, 0, 1, 3, 5, 0, 1, 2, 3])
    s.set_values(sizes, [3, 3, 5, 6, 4, 4])
    s.set_values(part, np.arange(6))
    s.add_element_set(mesh, part)
    s.add_component(root, mesh)
    s.create_default_views(root)
    path = tmp_path / "mixed.dov"
    s.save_to(path)
    s.close_file(path)
    with dw.open(path) as f:
        mesh = dw.to_meshio(f)
    assert [(b.type, b.data.tolist()) for b in mesh.cells] == [
        ("triangle", [[0, 1, 2], [0, 2, 3]]), ("polygon", [[0, 1, 2, 4, 3]]),
        ("polygon", [[0, 1, 2, 4, 3, 6]]),
        ("tetra", [[0, 1, 3, 5]]), ("quad", [[0, 1, 2, 3]])]
    assert [len(values) for values in mesh.cell_data["Element Set"]] == [2, 1, 1, 1, 1]
