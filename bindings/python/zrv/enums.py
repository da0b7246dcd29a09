"""The enumerations of the library. ZRVDefinitions.h says more about each; the numbers are the same."""
from enum import IntEnum


class ErrorCode(IntEnum):
    """How a call ended."""
    NONE = 0
    NOT_CONNECTED = 1
    SERIAL_COMM = 4
    DEVICE_RESPONSE = 5
    SERIAL_RESET = 6
    BAD_ACKNOWLEDGE = 7
    INVALID_VALUE = 8
    READ_ONLY_PARAM = 9
    INVALID_PARAM = 10
    INVALID_PORT_NAME = 11
    NO_DEVICE_FOUND = 12


class Param(IntEnum):
    """Single parameters of a controller."""
    DEVICE_STATE = 2
    USART_BAUD_RATE = 4
    SAMPLE_RATE = 5
    HARDWARE_FILTER_BW = 6
    VDIFFERENCE_MAX = 7
    VBIAS = 8
    OUTPUT_OFFSETS = 9
    DATA_SCALE = 10
    DATA_ROTATION = 11
    MEMS_DRIVER_ENABLE = 12
    DIGITAL_OUTPUT_ENABLE = 13
    LASER_MODULATION_ENABLE = 14
    BUFFER_OFFSET = 15
    DEVICE_AXES = 16
    BOOT_SETTING = 17
    DATA_MODE = 18
    SYNC_MODE = 19
    SYNC_STATE = 20


class Axes(IntEnum):
    """Orientation of the output axes."""
    NORMAL = 0
    FLIP_X = 1
    FLIP_Y = 2
    FLIP_BOTH = 3
    SWAP = 4
    SWAP_FLIP_X = 5
    SWAP_FLIP_Y = 6
    SWAP_FLIP_BOTH = 7


class Boot(IntEnum):
    """What a controller does after power-up."""
    DEFAULTS = 0
    SAVED_SETTINGS = 1
    SAVED_SETTINGS_AND_RUN = 2


class DataMode(IntEnum):
    """What a controller plays (BUFFER) or streams: analog inputs, or the sensor module (OR_BEX1)."""
    BUFFER = 0
    MODE_1 = 1
    MODE_2 = 2
    MODE_3 = 3
    MODE_4 = 4
    MODE_5 = 5
    ANALOG_VOLTS = 6
    ANALOG_VOLTS_RAW = 7
    ANALOG_NORMALIZED = 8
    OR_BEX1 = 9


class Sync(IntEnum):
    """Synchronisation modes."""
    OFF = 0
    MODE_1 = 1
    MODE_2 = 2
    MODE_3 = 3
    MODE_4 = 4
    MODE_5 = 5
    MODE_6 = 6
    MODE_7 = 7
    MODE_8 = 8
    MODE_9 = 9
    MODE_10 = 10
    MODE_11 = 11
    MODE_12 = 12
    MODE_13 = 13
    MODE_14 = 14
    MODE_15 = 15


class Flash(IntEnum):
    """What goes to flash."""
    SETTINGS = 0
    SETTINGS_AND_DATA = 1


class Waveform(IntEnum):
    """A sawtooth rises for `portion` of a period, a square is low for it."""
    SINE = 0
    SAWTOOTH = 1
    SQUARE = 2
    NOISE = 3


class WaveformAxes(IntEnum):
    """Where the signal of a waveform goes; with OVER_TIME x runs from left to right."""
    OVER_TIME = 0
    ON_X = 1
    ON_Y = 2


class Curve(IntEnum):
    """Spirographs."""
    ROSE = 0
    EPICYCLOID = 1
    EPITROCHOID = 2
    HYPOCYCLOID = 3
    HYPOTROCHOID = 4


class Modulation(IntEnum):
    """What the modulation of a Lissajous figure changes."""
    NOTHING = 0
    AMPLITUDE = 1
    PHASE = 2


class ImportFormat(IntEnum):
    """Kinds of files; POINTS are lines of x y m, POINT_TIMES lines of x y m t."""
    BY_CONTENT = 0
    ILDA = 1
    POINTS = 2
    POINT_TIMES = 3


class ScanPattern(IntEnum):
    """Kinds of scans that choose their own sample rate."""
    RASTER = 0
    IMAGING_RASTER = 1
    POINT_TO_POINT = 2


class Profile(IntEnum):
    """Speed along the lines between keypoints: constant, up and down on every line, as the corners demand."""
    LINEAR = 0
    TRAPEZOIDAL = 1
    OPTIMIZED = 2


class Closing(IntEnum):
    """How a path returns to its start: by a jump, straight and dark, the same way back."""
    LEFT_OUT = 0
    BLANK = 1
    RETRACE = 2


class Animation(IntEnum):
    """Once around clockwise, from left to right through the field, bouncing."""
    NOTHING = 0
    ROTATE = 1
    SCROLL = 2
    BOUNCE = 3
