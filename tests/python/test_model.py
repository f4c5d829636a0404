"""The model from Python: walking it, values one at a time, and the library's errors as exceptions; strict
numbers refuse, in def.csv and in data files, a value that is not entirely a number of its type."""

import re

import pytest

import ombrix
from conftest import raises_exactly
from ombrix import AccessType as A, AttributeType as K, Chronology as C


def test_entities_and_attributes_are_walked_in_model_order(model):
    assert [(e.position, e.type, e.name, e.full_name, str(e.id)) for e in model.entities] == [
        (0, "Solution Control", "Solution Control", "Solution Control", "1-1"),
        (1, "Pump", "P1", "P1", "3-17"),
        (2, "Server", "S4", "P1->S4", "4-17"),
        (3, "Server", "S5", "P1->S5", "5-17"),
    ]
    pump = model.entity("P1")
    assert [(a.path, a.kind, a.value_kind, a.unit, a.access) for a in pump.attributes] == [
        ("Speed", K.Double, K.Double, "rpm", A.ReadWrite),
        ("Count", K.Int, K.Int, "", A.WriteOnly),
        ("On", K.Bool, K.Bool, "", A.ReadWrite),
        ("Label", K.String, K.String, "", A.ReadWrite),
        ("Ratio", K.Float, K.Float, "", A.ReadOnly),
        ("Geometry", K.Composite, K.Composite, "", A.ReadWrite),
        ("Geometry.Diameter", K.Double, K.Double, "m", A.ReadWrite),
        ("Size", K.Shortcut, K.Double, "m", A.ReadWrite),
        ("Servers", K.List, K.List, "", A.ReadWrite),
    ]
    assert model.solution_control.name == "Solution Control"
    assert pump["Geometry.Diameter"].entity == pump


@pytest.mark.parametrize("key", ["P1", "3-17", ("Pump", "P1"), (3, 17), ombrix.EntityID(3, 17), 1])
def test_an_entity_is_named_in_every_form(model, key):
    assert model.entity(key).id == ombrix.EntityID(3, 17)


@pytest.mark.parametrize(
    "path, value, chronology",
    [
        ("Speed", 1234.5, C.Current),
        ("Count", -3, C.Current),
        ("On", False, C.Current),
        ("Label", "ünï text", C.Initial),
        ("Ratio", 0.5, C.Current),
        ("Geometry.Diameter", 7.25, C.Next),
    ],
)
def test_values_round_trip_by_kind(model, path, value, chronology):
    model.set("P1", path, value, chronology, user=False)
    got = model.get("P1", path, chronology, user=False)
    assert got == value and type(got) is type(value)


def test_a_shortcut_writes_through_to_its_target(model):
    model.entity("P1").set("Size", 0.75, unit="m")
    assert model.get((3, 17), "Geometry.Diameter") == 0.75
    assert model.attribute("P1", "Size").get() == 0.75


@pytest.mark.parametrize(
    "call, error, text",
    [
        (lambda m: m.set("P1", "Ratio", 0.1), ombrix.AccessError, "User has no write access"),
        (lambda m: m.get("P1", "Count"), ombrix.AccessError, "User has no read access"),
        (lambda m: m.set("P1", "Speed", 1.0, unit="K"), ombrix.Error, "Invalid Unit"),
        (lambda m: m.get("P1", "Geometry"), ombrix.Error, "Not Available"),
        (lambda m: m.entity("Nope"), KeyError, "No Entity found with entityName='Nope'"),
        (lambda m: m.entity(ombrix.EntityID(9, 9)), KeyError, "No Entity found with entityID='9-9'"),
        (lambda m: m.entity(7), KeyError, "No Entity found with entity_i='7'"),
        (
            lambda m: m.entity(("Pump", "P9")),
            KeyError,
            "No Entity found with entityType='Pump' and entityName='P9' and entity_i='0'",
        ),
        (lambda m: m.get("P1", "Geometry.X"), KeyError, "Invalid path [3-17] of type Pump : Geometry.X"),
        (lambda m: m.set("P1", "Speed", "fast"), TypeError, "3-17:Speed takes a number, not str"),
        (lambda m: m.set("P1", "On", 1), TypeError, "3-17:On takes a bool, not int"),
        (lambda m: m.set("P1", "Count", 1.5, user=False), TypeError, "3-17:Count takes an int, not float"),
        (
            lambda m: m.set("P1", "Count", 2**40, user=False),
            ValueError,
            "3-17:Count is a 32-bit Int: 1099511627776 does not fit",
        ),
        (
            lambda m: m.entity([1]),
            TypeError,
            "an entity is named by an Entity, an EntityID, a position, a "
            "(type, name) pair or a name, not list",
        ),
    ],
)
def test_errors_carry_the_library_text(model, call, error, text):
    with raises_exactly(error, text):
        call(model)


def test_the_definition_is_written_and_a_bad_place_is_an_os_error(model, tmp_path):
    model.set("P1", "Label", "changed", C.Initial, user=False)
    model.write_definition(str(tmp_path / "again.csv"))
    assert (
        ombrix.Model.read_definition(str(tmp_path / "again.csv")).get("P1", "Label", C.Initial) == "changed"
    )
    with pytest.raises(OSError):
        model.write_definition(str(tmp_path / "missing" / "def.csv"))


def test_strict_numbers_refuse_what_the_default_reads_cut_short(definition, tmp_path):
    bad = tmp_path / "bad.csv"
    bad.write_text(open(definition).read().replace("Speed,Double,1450.000000", "Speed,Double,1450 rpm"))
    assert ombrix.Model.read_definition(str(bad)).get("P1", "Speed", C.Initial) == 1450.0
    message = (
        "bad.csv, row 8: Invalid value '1450 rpm' in InitialValue of 3-17:Speed: "
        "the text is not entirely a number of type Double"
    )
    with pytest.raises(ombrix.AttributeReadError, match=re.escape(message)):
        ombrix.Model.read_definition(str(bad), strict_numbers=True)

    model = ombrix.Model.read_definition(definition, strict_numbers=True)
    out = tmp_path / "out.csv"
    data = ombrix.DataFile(model, {C.Current}, check_access=False)
    data.strict_numbers = True
    data.write(str(out))
    out.write_text(out.read_text().replace(",Count,3,", ",Count,3.5,"))
    message = "Invalid value '3.5' in CurrentValue of 3-17:Count: the text is not entirely a number of type Int"
    with pytest.raises(ombrix.AttributeReadError, match=re.escape(message)):
        data.read(str(out))
