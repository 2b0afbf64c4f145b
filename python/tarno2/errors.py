"""What goes wrong with recordings."""


class RecordingError(ValueError):
    """A recording can't be read. The message names the file and says what is wrong with it."""


class RecordingWarning(UserWarning):
    """A recording can be read, but something about it is not as its files tell."""
