import numpy as np
import pytest

import dovwriter as dw
from conftest import write_small_model


def test_round_trip(tmp_path):
    path = tmp_path / "small.dov"
    given = write_small_model(path)
    with dw.open(path) as f:
        assert [n.path for n in f.walk()] == [
            "Root", "Root/Placed", "Root/Placed/Sheet", "Root/Placed/Sheet/Part",
            "Root/Placed/Sheet/Part/Part"]
        g = f.geometries()[0]
        np.testing.assert_array_equal(g.read("Coordinates"), given["xyz"])
        np.testing.assert_array_equal(g.read("Connectivity"), given["cells"].ravel())
        np.testing.assert_array_equal(g.read("Polylength"), [4, 4])
        assert f.instance_groups == {"Time": [0.0, 0.5]}
        for t in (0.0, 0.5):
            np.testing.assert_array_equal(g.read("Temperature", Time=t),
                                          given[("T", t)].astype(np.float32))
            np.testing.assert_array_equal(g.read("Displacement", Time=t), given[("U", t)])
        # Scaled by 2, a quarter turn about z, then moved by (1, 2, 3).
        corner = g.matrix @ [1, 1, 0, 1]
        np.testing.assert_allclose(corner, [-1, 4, 3, 1], atol=1e-6)
        assert f.verify() == []


def bound(role):
    """A scene with an array object in a role; returns (scene, array)."""
    s = dw.Scene()
    mesh, array = s.create_object(dw.MeshObject), s.create_object(dw.ArrayObject)
    if role == "coordinates":
        s.set_coordinates(mesh, array)
    elif role == "connectivity":
        s.set_connectivity(mesh, array)
    elif role == "result":
        s.set_result(mesh, s.create_object(dw.InstanceGroupObject), 1, "R", array)
    return s, array


@pytest.mark.parametrize("role, values, dtype, refusal", [
    ("coordinates", np.zeros((2, 3)), None, TypeError),            # float64 needs asking
    ("coordinates", np.zeros((2, 3)), np.float32, None),
    ("coordinates", [[2**25, 0, 0]], None, ValueError),             # not exact as float32
    ("coordinates", np.zeros((2, 3), np.float32), np.uint32, TypeError),
    ("connectivity", np.array([[0, 1, 2]], np.int64), None, None),
    ("connectivity", [0, -1], None, ValueError),
    ("connectivity", np.zeros(3, np.float32), None, TypeError),
    ("connectivity", [0.5], np.uint32, ValueError),
    ("result", [-3, 4], None, None),                                # float32, exactly
    ("result", [2**40], None, ValueError),
    (None, np.zeros(2, np.complex64), None, TypeError),
    (None, np.zeros((2, 2, 2), np.float32), None, ValueError),
])
def test_element_types_convert_without_loss_or_refuse(role, values, dtype, refusal):
    s, array = bound(role)
    if refusal is None:
        s.set_values(array, values, dtype=dtype)
    else:
        with pytest.raises(refusal, match="float32|uint32|array"):
            s.set_values(array, values, dtype=dtype)


def test_bindings_check_what_an_array_holds():
    s, array = bound("connectivity")
    mesh = s.create_object(dw.MeshObject)
    with pytest.raises(TypeError, match="connectivity"):
        s.set_coordinates(mesh, array)  # one array cannot be float32 and uint32
    s.set_values(array, [1, 2, 3])
    other, = (s.create_object(dw.ArrayObject),)
    s.set_values(other, np.ones(3, np.float32))
    with pytest.raises(TypeError, match="holds float32"):
        s.add_element_set(mesh, other)
    s.set_dimension(other, 3)
    with pytest.raises(ValueError, match="Dimension is 3"):
        s.set_values(other, np.ones((1, 4), np.float32))
    with pytest.warns(UserWarning, match="do not reach the file"):
        s.set_element_indices(mesh, array)


def test_failures_raise_error_with_code(tmp_path):
    s, other = dw.Scene(), dw.Scene()
    foreign = other.create_object(dw.GroupObject)
    s.create_object(dw.GroupObject)
    with pytest.raises(dw.Error) as failure:
        s.set_name(foreign, "x")
    assert (failure.value.code, failure.value.description) == (8, "Invalid Identifier")
    assert str(failure.value).startswith('Exception "Invalid Object" raised.')
    path = tmp_path / "empty.dov"
    s.save_to(path)
    with pytest.raises(dw.Error) as failure:
        s.close_file(path)  # no root named
    assert failure.value.code == 19
    with pytest.raises(ValueError, match="not the one given to save_to"):
        s.close_file(tmp_path / "other.dov")
    with pytest.raises(dw.Error, match="File exists"):
        dw.Scene().save_to(path)
    with pytest.raises(TypeError, match="int, a float or a str"):
        s.set_property(foreign, "key", [1])
    with pytest.raises(TypeError, match="callable"):
        s.set_diagnostics(42)
