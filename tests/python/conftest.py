import os
import subprocess

import numpy as np
import pytest

import dovwriter as dw


@pytest.fixture(scope="session")
def plate(tmp_path_factory):
    """The demo model, written by examples/plate_model."""
    path = tmp_path_factory.mktemp("demo") / "plate.dov"
    subprocess.run([os.environ["DOVWRITER_PLATE_MODEL"], str(path)], check=True,
                   stdout=subprocess.DEVNULL)
    return path


def write_small_model(path):
    """small_scene(path), closed. Returns what was given."""
    s, given = small_scene(path)
    s.close_file(path)
    return given


def small_scene(path):
    """A quad mesh of two cells in one element set, placed by a transformation
    (translated, turned a quarter about z, scaled by 2), with a temperature
    and a displacement at two times, saved to `path` but not closed.
    Returns the scene and what was given."""
    s = dw.Scene("small")
    root, mesh = s.create_object(dw.GroupObject), s.create_object(dw.MeshObject)
    s.set_name(root, "Root")
    s.set_name(mesh, "Sheet")
    xyz, cells, part = (s.create_object(dw.ArrayObject) for _ in range(3))
    s.set_coordinates(mesh, xyz)
    given = {"xyz": np.array([[0, 0, 0], [1, 0, 0], [2, 0, 0], [0, 1, 0], [1, 1, 0], [2, 1, 0]])}
    s.set_values(xyz, given["xyz"])  # int64, exact as float32
    s.set_connectivity(mesh, cells)
    given["cells"] = np.array([[0, 1, 4, 3], [1, 2, 5, 4]], dtype=np.int64)
    s.set_values(cells, given["cells"])  # Dimension 4 from the rows
    s.set_name(part, "Part")
    s.set_values(part, np.arange(2))
    s.add_element_set(mesh, part)
    time = s.create_object(dw.InstanceGroupObject)
    s.set_name(time, "Time")
    for t in (0.0, 0.5):
        temperature, displacement = s.create_object(0), s.create_object(0)
        given[("T", t)] = np.linspace(20, 30, 6) + t
        s.set_result(mesh, time, t, "Temperature", dw.ScalarVariable, temperature)
        s.set_values(temperature, given[("T", t)], dtype=np.float32)
        given[("U", t)] = np.full((6, 3), t, dtype=np.float32)
        s.set_result(mesh, time, t, "Displacement", dw.VectorVariable, displacement)
        s.lend_values(displacement, given[("U", t)])
    place = s.create_object(dw.TransformationObject)
    s.set_name(place, "Placed")
    s.set_translation(place, 1, 2, 3)
    s.set_rotation(place, 0, 0, 1, np.pi / 2)
    s.set_scale(place, 2, 2, 2)
    s.add_component(root, mesh, place)
    s.create_default_views(root)
    s.save_to(path)
    return s, given
