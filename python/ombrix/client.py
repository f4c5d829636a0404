"""The client's side of the exchange as a loop of steps.

:class:`Client` does what ``examples/exchange_client.cpp`` does: it waits for the solver's definition
file and rebuilds the model, then per exchange waits for the solver's data, reads ``out.csv``, hands the
user a :class:`Step` to compute, writes ``in.csv``, signals the solver and waits for its
acknowledgement, while its heartbeat runs; it ends when the solver has finished. The user writes only
the compute step.

Every wait for the solver goes through :class:`Handshake`, the one place that knows how the partner's
state is waited for (today by polling the state file every 100 ms, with the partner's heartbeat as the
stop condition).
"""

from __future__ import annotations

import contextlib
import glob
import os
import time
import weakref
from collections.abc import Hashable, Iterator, Mapping, Sequence
from typing import Any, Optional, Union

import numpy as np

from ombrix._ombrix import (
    AccessType,
    AliveFile,
    Attribute,
    AttributeType,
    Chronology,
    DataFile,
    Error,
    ExchangeFiles,
    Model,
    NumberFormat,
    Options,
    ReadFailureHandling,
    SimulationTime,
    SolveState,
    StateFile,
    View,
)

#: What names one slot of a client's inputs or outputs: a path that exactly one entity has, an
#: (entity, path) pair (the entity by name, ID, ``EntityID`` or ``Entity``), or an :class:`Attribute`.
SlotKey = Union[str, tuple, Attribute]

_NUMERIC = (AttributeType.Int, AttributeType.Bool, AttributeType.Float, AttributeType.Double)
_READABLE = (AccessType.ReadOnly, AccessType.ReadWrite)
_WRITABLE = (AccessType.WriteOnly, AccessType.ReadWrite)


class ExchangeError(Error):
    """The exchange cannot go on: the solver did not start, stopped answering, reported that it failed,
    or did not reach the awaited state within the time-out."""


class Handshake:
    """One side's state file and heartbeat, and the partner's.

    The client writes ``in.state`` and ``in.alive`` and watches ``out.state`` and ``out.alive``.
    :meth:`wait_for` is the only wait for the partner's state: it polls the partner's state file every
    100 ms (``StateFile.wait_for``) and stops early when the partner's heartbeat is older than the grace
    period or the partner reports ``Failed``.
    """

    def __init__(
        self, files: ExchangeFiles, options: Options, timeout_ms: int, partner: str = "solver"
    ) -> None:
        self.own = StateFile(files.in_state_file)
        self.partner = StateFile(files.out_state_file)
        self.own_alive = AliveFile(files.in_alive_file, interval=options.solver_heartbeat_interval)
        self.partner_alive = AliveFile(
            files.out_alive_file, grace_period=options.client_heartbeat_grace_period
        )
        self.timeout_ms = timeout_ms
        self.partner_name = partner
        #: Seconds spent waiting for the partner so far.
        self.waiting = 0.0

    def set_state(self, state: SolveState) -> None:
        """Writes this side's state."""
        self.own.write(state)

    def start_heartbeat(self) -> None:
        self.own_alive.start()

    def stop_heartbeat(self) -> None:
        self.own_alive.stop()

    def wait_for_partner(self) -> None:
        """Waits for the partner's first heartbeat; :class:`ExchangeError` when none comes in time."""
        if not self.partner_alive.wait_for_alive(self.timeout_ms):
            raise ExchangeError(
                f"the {self.partner_name} did not start: no heartbeat in {self.partner_alive.path} "
                f"within {self.timeout_ms} ms"
            )

    def wait_for(self, *wanted: SolveState) -> SolveState:
        """Waits until the partner's state is one of `wanted` and returns it. Raises
        :class:`ExchangeError` when the partner's heartbeat stops, it reports ``Failed``, or the
        time-out passes."""
        start = time.monotonic()
        state = self.partner.wait_for(
            {*wanted, SolveState.Failed}, self.timeout_ms, partner=self.partner_alive
        )
        self.waiting += time.monotonic() - start
        if state in wanted:
            return state
        if not self.partner_alive.is_alive:
            raise ExchangeError(
                f"the {self.partner_name} stopped answering: its heartbeat in {self.partner_alive.path} "
                f"is older than {self.partner_alive.grace_period} s"
            )
        if state == SolveState.Failed:
            raise ExchangeError(f"the {self.partner_name} reports that it failed")
        names = " or ".join(s.name for s in wanted)
        raise ExchangeError(
            f"timed out after {self.timeout_ms} ms waiting for the {self.partner_name} to reach {names} "
            f"(last seen: {int(state)})"
        )


class Slots(Mapping):
    """The inputs or outputs of a step: one float64 slot per attribute, in the order given.

    ``slots["Probe.Temperature"]`` reads a slot, ``slots["Heater Flux"] = 20000.0`` writes one, and
    :attr:`array` (or ``numpy.asarray(slots)``) is the whole array, to hand to a model and to fill from
    it. A slot is found by the key it was given with, by its attribute path when exactly one slot has
    that path, by an (entity, path) pair or by its :class:`Attribute`.
    """

    def __init__(self, view: View, keys: Optional[Sequence[Hashable]] = None) -> None:
        self.view = view
        #: The slots' values; change them in place to answer.
        self.array: np.ndarray = np.zeros(len(view))
        self._keys = list(view.keys if keys is None else keys)
        self._attributes = list(view.attributes)
        self._positions: dict = {}
        for i, key in enumerate(self._keys):
            if isinstance(key, Hashable):
                self._positions.setdefault(key, i)
        self._by_path: dict = {}
        for i, attribute in enumerate(self._attributes):
            self._by_path.setdefault(attribute.path, []).append(i)

    def refresh(self) -> None:
        """Reads the attributes' values into :attr:`array`."""
        self.view.get(out=self.array)

    def store(self, where: Optional[np.ndarray] = None) -> None:
        """Writes :attr:`array` to the attributes (only where `where` is True, when given)."""
        self.view.set(self.array, where)

    def index(self, key: SlotKey) -> int:
        """The position of the slot that `key` names; :class:`KeyError` when none does."""
        if isinstance(key, Hashable) and key in self._positions:
            return self._positions[key]
        if isinstance(key, str):
            found = self._by_path.get(key, [])
            if len(found) == 1:
                return found[0]
            if len(found) > 1:
                raise KeyError(
                    f"{len(found)} slots have the path {key!r}; name one by an (entity, path) pair"
                )
        attribute = key if isinstance(key, Attribute) else None
        if isinstance(key, tuple) and len(key) == 2:
            try:
                attribute = self.view.model.attribute(*key)
            except (KeyError, TypeError):
                attribute = None
        if attribute is not None and attribute in self._attributes:
            return self._attributes.index(attribute)
        shown = ", ".join(repr(k) for k in self._keys[:8]) + (", ..." if len(self._keys) > 8 else "")
        raise KeyError(f"no slot {key!r}; the slots are {shown}")

    def __getitem__(self, key: SlotKey) -> float:
        return float(self.array[self.index(key)])

    def __setitem__(self, key: SlotKey, value: float) -> None:
        self.array[self.index(key)] = value

    def __iter__(self) -> Iterator:
        return iter(self._keys)

    def __len__(self) -> int:
        return len(self._keys)

    def __array__(self, dtype: Any = None) -> np.ndarray:
        return self.array if dtype is None else self.array.astype(dtype)

    def __repr__(self) -> str:
        return "Slots({" + ", ".join(f"{k!r}: {v!r}" for k, v in zip(self._keys, self.array.tolist())) + "})"


class Step:
    """One exchange: the solver's data has been read; set :attr:`outputs` and let the loop go on."""

    def __init__(
        self, number: int, simulation_time: SimulationTime, inputs: Slots, outputs: Slots, model: Model
    ) -> None:
        #: Exchanges so far, counted from 1.
        self.number = number
        #: The simulation time that ``out.csv`` carried.
        self.simulation_time = simulation_time
        #: The input attributes' values (read-only use).
        self.inputs = inputs
        #: The output attributes' values as read; the slots changed are written back.
        self.outputs = outputs
        #: The whole model, for anything the slots do not cover.
        self.model = model
        self.end_requested = False

    @property
    def iteration(self) -> int:
        return self.simulation_time.iteration

    @property
    def time(self) -> float:
        """The simulated time in seconds; NaN for a steady solve."""
        return self.simulation_time.time

    @property
    def time_step(self) -> float:
        """The time step in seconds; NaN when the solver gives none."""
        return self.simulation_time.time_step

    def end(self) -> None:
        """Answers this step with "END" instead of the iteration: the solver stops after it."""
        self.end_requested = True


def default_options(directory: str) -> Options:
    """The client's options when none are given: the library's defaults for `directory`, with a data
    file caught while being written read again (Retry, 5 attempts)."""
    options = Options()
    options.directory = directory
    options.read_failure_handling = ReadFailureHandling.Retry
    options.in_file_try_attempts = 5
    return options


def _abandon(own: StateFile, heartbeat: AliveFile) -> None:
    # A client dropped or exiting in the middle of an exchange: the solver learns at once.
    own.write(SolveState.Failed)
    heartbeat.stop()


class Client:
    """The client's side of one exchange, as an iterator of :class:`Step`.

    `inputs` and `outputs` name the attributes handed to each step (see :data:`SlotKey`); by default
    every Int, Bool, Float or Double attribute that a user may read, respectively write, keyed
    ``"<entity ID>:<path>"`` and also found by path. `options` (:class:`Options`) gives the data files'
    mode, the read-failure handling and the heartbeat (its directory is not used: `directory` is);
    `timeout_ms` bounds every wait for the solver (negative: no limit). `chronology` is the value column
    of the data files and of the slots.

    Use it in a ``with`` block: leaving the block normally ends the exchange cleanly (the pending step is
    answered with "END" until the solver finishes), leaving it with an exception writes ``Failed`` so
    that the solver stops at once. A client dropped in the middle of an exchange also writes ``Failed``.
    """

    def __init__(
        self,
        directory: str,
        inputs: Optional[Sequence[SlotKey]] = None,
        outputs: Optional[Sequence[SlotKey]] = None,
        *,
        options: Optional[Options] = None,
        timeout_ms: int = 60000,
        chronology: Chronology = Chronology.Current,
    ) -> None:
        self.options = options if options is not None else default_options(directory)
        self.files = ExchangeFiles(directory, self.options.file_mode)
        self.handshake = Handshake(self.files, self.options, timeout_ms)
        self.chronology = chronology
        self._input_keys = inputs
        self._output_keys = outputs
        self.model: Optional[Model] = None
        self.data: Optional[DataFile] = None
        self.inputs: Optional[Slots] = None
        self.outputs: Optional[Slots] = None
        self._phase = "new"  # new, running, finished, failed
        self._current: Optional[Step] = None
        self._finalizer: Optional[weakref.finalize] = None
        #: Exchanges made so far.
        self.exchanges = 0
        #: Seconds spent writing and reading data files, in the user's compute steps, and since the
        #: model was read.
        self.file_seconds = 0.0
        self.compute_seconds = 0.0
        self._loop_start = 0.0
        self._returned_at = 0.0

    # The exchange, phase by phase.

    def start(self) -> Model:
        """Waits for the solver's definition file and rebuilds the model from it (done by the first
        step otherwise). Returns the model."""
        if self._phase != "new":
            return self.model
        if not os.path.isdir(self.files.directory):
            raise ExchangeError(f"the exchange directory {self.files.directory} does not exist")
        self._phase = "running"
        self._remove_own_files()
        self._finalizer = weakref.finalize(self, _abandon, self.handshake.own, self.handshake.own_alive)
        with self._failing():
            hs = self.handshake
            hs.set_state(SolveState.WaitFor_Def_CSV_Write)
            hs.start_heartbeat()
            hs.wait_for_partner()
            hs.wait_for(SolveState.FinishedWriting_Def_CSV_File)
            hs.set_state(SolveState.Reading_Def_CSV_File)
            self.model = Model.read_definition(self.files.def_file, strict_numbers=True)
            self.inputs = self._slots(self._input_keys, _READABLE)
            self.outputs = self._slots(self._output_keys, _WRITABLE)
            self.data = DataFile(
                self.model,
                {self.chronology},
                check_access=False,
                handling=self.options.read_failure_handling,
                attempts=self.options.in_file_try_attempts,
            )
            self.data.use_full_entity_names = self.options.use_full_entity_names
            # "50OO" is refused rather than read as 50, and numbers travel with every digit.
            self.data.strict_numbers = True
            self.data.number_format = NumberFormat.RoundTrip
            hs.set_state(SolveState.FinishedReading_Def_CSV_File)
        self.handshake.waiting = 0.0  # the exchanges alone, not the start
        self._loop_start = time.monotonic()
        return self.model

    def steps(self) -> Iterator[Step]:
        """The exchanges, one :class:`Step` each, until the solver finishes. Each step is answered when
        the next one is asked for."""
        while True:
            step = self._next_step()
            if step is None:
                return
            yield step

    def finish(self) -> None:
        """Ends the exchange cleanly: answers the pending step (and any further one) with "END" until
        the solver finishes, then writes ``Finished``."""
        while self._phase == "running":
            if self._current is not None:
                self._current.end()
            self._next_step()

    def close(self) -> None:
        """Leaves the exchange: a client in the middle of one writes ``Failed``; the heartbeat stops."""
        if self._phase == "running":
            self._phase = "failed"
            self._finalizer()

    def __enter__(self) -> "Client":
        return self

    def __exit__(self, kind, error, trace) -> None:
        if kind is None:
            self.finish()
        else:
            self.close()

    @property
    def wall_seconds(self) -> float:
        """Seconds since the model was read (the exchanges alone, not the start)."""
        return time.monotonic() - self._loop_start if self._loop_start else 0.0

    # The parts.

    def _next_step(self) -> Optional[Step]:
        if self._phase == "new":
            self.start()
        if self._phase != "running":
            return None
        now = time.monotonic()
        hs = self.handshake
        with self._failing():
            if self._current is not None:
                self.compute_seconds += now - self._returned_at
                self._answer(self._current)
            if hs.wait_for(SolveState.CFDSolver_NewDataReady, SolveState.Finished) == SolveState.Finished:
                hs.set_state(SolveState.Finished)
                hs.stop_heartbeat()
                self._phase = "finished"
                self._finalizer.detach()
                return None
            self.exchanges += 1
            hs.set_state(SolveState.Client_Solving)
            started = time.monotonic()
            self.data.apply(self.files.out_file)
            self.file_seconds += time.monotonic() - started
            self.inputs.refresh()
            self.outputs.refresh()
            self._snapshot = self.outputs.array.copy()
            self._current = Step(
                self.exchanges, self.data.simulation_time, self.inputs, self.outputs, self.model
            )
        self._returned_at = time.monotonic()
        return self._current

    def _answer(self, step: Step) -> None:
        # Only the outputs the step changed are written: a shortcut and its target may both be outputs,
        # and writing back the one left alone would undo the other.
        now, before = step.outputs.array, self._snapshot
        step.outputs.store(~((now == before) | (np.isnan(now) & np.isnan(before))))
        if step.end_requested:
            self.data.iteration_word = "END"
        started = time.monotonic()
        self.data.write(self.files.in_file)
        self.file_seconds += time.monotonic() - started
        hs = self.handshake
        hs.set_state(SolveState.Client_NewDataReady)
        hs.wait_for(SolveState.CFDSolver_Solving, SolveState.Finished)
        hs.set_state(SolveState.Client_WaitForData)
        self.files.advance(1)
        self._current = None

    def _slots(self, keys: Optional[Sequence[SlotKey]], access: tuple) -> Slots:
        if keys is not None:
            return Slots(View(self.model, list(keys), self.chronology))
        chosen = [
            (entity, attribute.path)
            for entity in self.model.entities
            for attribute in entity.attributes
            if attribute.value_kind in _NUMERIC and attribute.access in access
        ]
        keys = [f"{entity.id}:{path}" for entity, path in chosen]
        return Slots(View(self.model, chosen, self.chronology), keys)

    def _remove_own_files(self) -> None:
        # What an earlier run left must not pass for news.
        directory = self.files.directory
        for name in (os.path.basename(self.files.in_state_file), os.path.basename(self.files.in_alive_file)):
            _remove(os.path.join(directory, name))
        for path in glob.glob(os.path.join(glob.escape(directory), "in*.csv")):
            _remove(path)

    @contextlib.contextmanager
    def _failing(self) -> Iterator[None]:
        # Any error on the way leaves the exchange with Failed written.
        try:
            yield
        except BaseException:
            self.close()
            raise


def _remove(path: str) -> None:
    try:
        os.remove(path)
    except FileNotFoundError:
        pass
