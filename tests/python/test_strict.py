"""Strict numbers: a value that is not entirely a number of its type is refused, in def.csv and in data
files, instead of being read as the number it starts with."""

import re

import pytest

import ombrix
from ombrix import Chronology as C


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
