"""OmbrixModel for Python: the model that a CFD solver and its client exchange, its files, and a
client loop in which the user writes only the compute step::

    import ombrix

    with ombrix.Client("/tmp/exchange", inputs=["Probe.Temperature"], outputs=["Heater Flux"]) as client:
        for step in client.steps():
            step.outputs["Heater Flux"] = 4000.0 * (330.0 - step.inputs["Probe.Temperature"])

The compiled part (``ombrix._ombrix``) binds the C++ library: :class:`Model`, :class:`Entity` and
:class:`Attribute` (values one at a time, with the library's unit and access checks), :class:`DataFile`
(data files read into and written from numpy arrays), :class:`View` (a fixed list of attributes mapped
to array slots), and the protocol's :class:`StateFile`, :class:`AliveFile`, :class:`ExchangeFiles` and
:class:`Options`. Every library error is an :class:`Error` with the library's text. ``docs/python.md``
tells more.
"""

from ombrix._ombrix import (
    AccessError,
    AccessType,
    AliveFile,
    ArgumentError,
    Attribute,
    AttributeReadError,
    AttributeType,
    Chronology,
    Column,
    DataFile,
    Entity,
    EntityID,
    Error,
    ExchangeFiles,
    FileMode,
    LogLevel,
    Model,
    NotFoundError,
    NumberFormat,
    Options,
    ReadFailureHandling,
    SimulationTime,
    SolveState,
    StateFile,
    StateFileMode,
    SyncMode,
    Values,
    View,
    initialize_log,
    terminate_log,
)
from ombrix.client import Client, ExchangeError, Handshake, Slots, Step

__all__ = [
    "AccessError",
    "AccessType",
    "AliveFile",
    "ArgumentError",
    "Attribute",
    "AttributeReadError",
    "AttributeType",
    "Chronology",
    "Client",
    "Column",
    "DataFile",
    "Entity",
    "EntityID",
    "Error",
    "ExchangeError",
    "ExchangeFiles",
    "FileMode",
    "Handshake",
    "LogLevel",
    "Model",
    "NotFoundError",
    "NumberFormat",
    "Options",
    "ReadFailureHandling",
    "SimulationTime",
    "Slots",
    "SolveState",
    "StateFile",
    "StateFileMode",
    "Step",
    "SyncMode",
    "Values",
    "View",
    "initialize_log",
    "terminate_log",
]
