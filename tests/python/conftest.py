"""Shared by the Python tests: a definition file with every value kind, units, access types, a composite,
a shortcut and a list of owned entities, and the example programs when the build made them."""

import os
import re

import pytest

import ombrix

ROWS = [
    "1-1,Solution Control,Solution Control,ReadOnly,Results,Composite,,,",
    "1-1,Solution Control,Solution Control,ReadOnly,Results.Iteration,Int,0,0,",
    "1-1,Solution Control,Solution Control,ReadOnly,Results.Time,Double,0.000000,0.000000,s",
    "1-1,Solution Control,Solution Control,ReadOnly,Transient,Composite,,,",
    "1-1,Solution Control,Solution Control,ReadOnly,Transient.Time Varying,Bool,Yes,Yes,",
    "3-17,Pump,P1,ReadWrite,Speed,Double,1450.000000,1500.000000,rpm",
    "3-17,Pump,P1,WriteOnly,Count,Int,3,3,",
    "3-17,Pump,P1,ReadWrite,On,Bool,Yes,Yes,",
    "3-17,Pump,P1,ReadWrite,Label,String,main,main,",
    "3-17,Pump,P1,ReadOnly,Ratio,Float,0.250000,0.250000,",
    "3-17,Pump,P1,ReadWrite,Geometry,Composite,,,",
    "3-17,Pump,P1,ReadWrite,Geometry.Diameter,Double,0.300000,0.300000,m",
    "3-17,Pump,P1,ReadWrite,Size,Shortcut,Geometry.Diameter,,",
    "3-17,Pump,P1,ReadWrite,Servers,List,R|Owns:4-17|Owns:5-17,,",
    "4-17,Server,S4,ReadWrite,Load,Double,4.000000,4.000000,W",
    "5-17,Server,S5,ReadWrite,Load,Double,5.000000,5.000000,W",
]
HEADER = "EntityID,EntityType,EntityName,Access,AttributePath,Type,InitialValue,CurrentValue,Unit"


@pytest.fixture
def definition(tmp_path):
    path = tmp_path / "def.csv"
    path.write_text("\n".join(["<<,START,CSV,VER04,>>", HEADER, *ROWS, "<<,END,CSV,VER04,>>", ""]))
    return str(path)


@pytest.fixture
def model(definition):
    return ombrix.Model.read_definition(definition)


def raises_exactly(error, text):
    """pytest.raises that also compares the whole message."""
    return pytest.raises(error, match="^" + re.escape(text) + "$")


def example_program(name):
    """The example program `name` of this build, or a skip."""
    path = os.environ.get("OMBRIX_EXAMPLE_" + name.upper())
    if not path or not os.path.exists(path):
        pytest.skip("the example programs were not built")
    return path
