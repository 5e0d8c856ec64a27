import numpy as np
import pytest

import dovwriter as dw

PLATE = "Bracket assembly/Plate/Flange/Flange"


def test_demo_tree(plate):
    with dw.open(plate) as f:
        assert f.format_version == "1.1"
        assert f.global_information["application_name"] == "plate_model example"
        nodes = list(f.walk())
        assert [n.id for n in nodes] == list(range(1, 15))  # depth first, as stored
        assert all(child.parent.id == n.id for n in nodes for child in n.children)
        bolts = [n for n in nodes if n.kind == "geometry" and n.name == "Bolt"]
        assert [b.path for b in bolts] == ["Bracket assembly/Bolt 1/Bolt/Bolt",
                                           "Bracket assembly/Bolt 2/Bolt/Bolt"]
        flange = f.geometry(PLATE)
        assert flange.color == pytest.approx((0.85, 0.25, 0.2, 1.0))
        assert flange.visible and flange.parent.kind == "shape"
        assert f.verify() == []


def test_demo_values(plate):
    with dw.open(plate) as f:
        assert f.instance_groups == {"Load": pytest.approx([i / 10 for i in range(1, 11)])}
        flange, web = f.geometry(PLATE), f.geometry("Bracket assembly/Plate/Web/Web")
        xyz = flange.read("Coordinates")
        assert xyz.dtype == np.float32 and xyz.shape == (100000, 3)
        assert xyz.max(axis=0).tolist() == [199.5, 124.5, 0.0]
        assert web.variables["Coordinates"].link == (flange.id, 2)
        np.testing.assert_array_equal(web.read("Coordinates"), xyz)
        cells = flange.read("Connectivity")
        assert cells.dtype == np.uint32 and cells[:4].tolist() == [0, 1, 401, 400]
        assert flange.read("Node Ids")[0] == 1000000
        tip = flange.read("Displacement", Load=0.5)[:, 2].min()
        assert tip == pytest.approx(-2 * 0.5)  # every set holds the results of all nodes
        full, tenth = (np.abs(flange.read("Stress", Load=v)).max() for v in (1, 0.1))
        assert full == pytest.approx(10 * tenth, rel=1e-5)
        # Values match as the library writes them: 0.1 * 3 is "0.3" there.
        np.testing.assert_array_equal(flange.read("Stress", Load=0.1 * 3),
                                      flange.read("Stress", Load="0.3"))


def test_lookup_mistakes_say_what_exists(plate):
    with dw.open(plate) as f:
        with pytest.raises(KeyError, match="Bolt 1"):
            f.geometry("Bracket assembly/Bolt")
        with pytest.raises(KeyError, match="group"):
            f.geometry(2)
        g = f.geometry(PLATE)
        with pytest.raises(KeyError, match="Load"):
            g.read("Stress")
        with pytest.raises(KeyError, match="0.1, 0.2"):
            g.read("Stress", Load=7)
        with pytest.raises(KeyError, match="no variable"):
            g.read("Pressure")


def test_damaged_files(plate, tmp_path):
    with pytest.raises(FileNotFoundError):
        dw.open(tmp_path / "missing.dov")
    cut = tmp_path / "cut.dov"
    cut.write_bytes(plate.read_bytes()[:50000])
    with pytest.raises(dw.Error) as failure:
        dw.open(cut)
    assert failure.value.code == 9 and failure.value.description
    assert dw.verify(cut)  # a file that cannot be opened can still be checked
