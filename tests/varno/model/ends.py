"""The ways in which a run ends before its time."""


class Ended(Exception):
    """The run ends with an exit status."""

    def __init__(self, status):
        super().__init__(status)
        self.status = status


class KilledBySignal(Exception):
    """The process dies of a signal, given by its name."""

    def __init__(self, signal_name):
        super().__init__(signal_name)
        self.signal_name = signal_name


class NotModelled(Exception):
    """The input asks for something that this model leaves out; the text says what."""
