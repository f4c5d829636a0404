"""Values in bulk: data files read into and written from numpy arrays, and views for the per-iteration
loop."""

import numpy as np
import pytest

import ombrix
from conftest import raises_exactly
from ombrix import Chronology as C


@pytest.fixture
def out_file(model, tmp_path):
    """out.csv as a solver writes it, with the pump's values changed first."""
    model.set("P1", "Speed", 1600.0, user=False)
    model.set("P1", "Count", 4, user=False)
    model.set("P1", "Label", "spare", user=False)
    path = str(tmp_path / "out.csv")
    ombrix.DataFile(model, {C.Initial, C.Current}).write(path)
    return path


def client_data(definition):
    """A client's data file of the same model, reading without the user's access checks."""
    return ombrix.DataFile(
        ombrix.Model.read_definition(definition), {C.Initial, C.Current}, check_access=False
    )


def test_a_data_file_reads_into_arrays_by_kind_and_writes_them_changed(definition, out_file, tmp_path):
    data = client_data(definition)
    values = data.read(out_file)
    double = values.double
    places = [
        (str(ombrix.EntityID(*i)), values.path_names[p], C(c))
        for i, p, c in zip(double.entity_ids.tolist(), double.paths, double.chronologies)
    ]
    assert places[2:4] == [("3-17", "Speed", C.Initial), ("3-17", "Speed", C.Current)]
    assert double.values.dtype == np.float64 and double.values[3] == 1600.0
    assert double.entities.tolist() == [0, 0, 1, 1, 1, 1, 2, 2, 3, 3]
    assert values.int.values.dtype == np.int32 and values.int.values.tolist() == [0, 0, 3, 4]
    assert values.bool.values.dtype == np.bool_ and values.float.values.dtype == np.float32
    assert values.string.values == ["main", "spare"] and len(values) == 22
    assert data.simulation_time.iteration == 0 and values.complete
    again = data.read(out_file)
    assert again.double.paths is double.paths and again.double.values is not double.values
    with pytest.raises(ValueError):
        double.paths[0] = 1  # the places are shared and read-only
    # Arrays changed in place or replaced are written.
    again.double.values *= 2
    again.int.values = [7, 7, 7, 7]
    again.string.values = ["a", "b"]
    data.write(str(tmp_path / "in.csv"), again)
    back = client_data(definition).read(str(tmp_path / "in.csv"))
    assert back.double.values.tolist() == again.double.values.tolist() == (double.values * 2).tolist()
    assert back.int.values.tolist() == [7, 7, 7, 7] and back.string.values == ["a", "b"]


@pytest.mark.parametrize(
    "column, replacement, text",
    [
        ("double", np.zeros(9), "Values.double takes 10 values in one dimension, not shape (9,)"),
        ("double", np.zeros((2, 5)), "Values.double takes 10 values in one dimension, not shape (2, 5)"),
        ("int", np.zeros(4), "Values.int takes values of dtype int32, not float64"),
        ("bool", [1, 0], "Values.bool takes values of dtype bool, not int64"),
        ("double", ["x"] * 10, "Values.double takes values of dtype float64, not <U1"),
        ("string", ["a", 1], "Values.string takes str values, not int"),
        ("string", "ab", "Values.string takes a list of str, not str"),
    ],
)
def test_bad_arrays_are_refused(definition, out_file, column, replacement, text):
    values = client_data(definition).read(out_file)
    with raises_exactly(ValueError, text):
        getattr(values, column).values = replacement


def test_user_reads_check_access_and_refuse_the_whole_file(definition, out_file, tmp_path):
    data = ombrix.DataFile(ombrix.Model.read_definition(definition), {C.Initial, C.Current})
    with pytest.raises(ombrix.AttributeReadError, match=r"row 3: No Write Access to 1-1:Results.Iteration"):
        data.read(out_file)
    with pytest.raises(ombrix.Error, match="Missing incoming file"):
        data.apply(str(tmp_path / "none.csv"))


def test_a_view_reads_and_writes_its_slots(model):
    view = ombrix.View(model, ["Speed", ("S5", "Load"), ("P1", "On"), model.attribute("P1", "Size")])
    assert view.get().tolist() == [1500.0, 5.0, 1.0, 0.3]
    out = np.empty(4)
    view.set([1.0, 2.0, 0.0, 0.5])
    assert view.get(out=out) is out and out.tolist() == [1.0, 2.0, 0.0, 0.5]
    view.set(np.array([9.0, 9.0, 9.0, 9.0]), where=np.array([False, True, False, False]))
    assert view.get().tolist() == [1.0, 9.0, 0.0, 0.5]
    assert model.get("P1", "Geometry.Diameter") == 0.5 and model.get("P1", "On") is False


@pytest.mark.parametrize(
    "items, error, text",
    [
        (["Nothing"], KeyError, "No entity has an attribute 'Nothing'"),
        (
            ["Load"],
            KeyError,
            "Attribute path 'Load' is ambiguous: entities 4-17, 5-17 have it; name it by "
            "an (entity, path) pair",
        ),
        (
            [("P1", "Label")],
            ValueError,
            "3-17:Label is of kind String: a View holds Int, Bool, Float and " "Double values",
        ),
        ([3.5], TypeError, "a View slot is an Attribute, an (entity, path) pair or a path, not float"),
    ],
)
def test_a_view_refuses_what_it_cannot_hold(model, items, error, text):
    with raises_exactly(error, text):
        ombrix.View(model, items)


@pytest.mark.parametrize(
    "call, error, text",
    [
        (lambda v: v.set([1.0]), ValueError, "View.set takes 2 values in one dimension, not 1"),
        (lambda v: v.set(["a", "b"]), ValueError, "View.set takes numbers, not <U1"),
        (
            lambda v: v.get(out=np.zeros(2, dtype=np.float32)),
            ValueError,
            "View.get writes into a writable, contiguous float64 array of 2 values, not array([0., 0.], "
            "dtype=float32)",
        ),
        (lambda v: v.set([1.0, 2.0]), ombrix.AccessError, "1-1:Results.Time: User has no write access"),
    ],
)
def test_view_errors_leave_the_values_alone(model, call, error, text):
    view = ombrix.View(model, ["Speed", "Results.Time"])
    with raises_exactly(error, text):
        call(view)
    assert view.get().tolist() == [1500.0, 0.0]
