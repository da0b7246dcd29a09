#!/usr/bin/env python3
"""Lists the controllers, connects to one, plays a circle for two seconds and stops. Needs only Python 3.

  play_circle.py [--library PATH] [PORT]

Without a port it lists what is there and uses the first. The library is found by the system unless its path
is given.
"""
import argparse
import ctypes
import ctypes.util
import math
import sys
from ctypes import POINTER, c_bool, c_char, c_char_p, c_float, c_int, c_ubyte, c_uint, c_void_p

NUM_SAMPLES = 2000
ERROR_NONE = 0
PARAM_SAMPLE_RATE = 5
MAX_DEVICES = 12


class DeviceParams(ctypes.Structure):
    """ZRVDeviceParamsStruct, field by field; units are in ZRVDefinitions.h."""
    _fields_ = [
        ("ParamsValid", c_ubyte),
        ("DeviceName", c_char * 32),
        ("FirmwareName", c_char * 16),
        ("CommType", c_char * 16),
        ("BluetoothMAC", c_char * 18),
        ("HardwareFilterOn", c_uint),
        ("VmaxMEMSDriver", c_float),
        ("DeviceState", c_uint),
        ("DeviceErrorRegister", c_uint),
        ("USARTBaudRate", c_uint),
        ("SampleRate", c_uint),
        ("HardwareFilterBw", c_uint),
        ("VdifferenceMax", c_float),
        ("Vbias", c_float),
        ("XOffset", c_float),
        ("YOffset", c_float),
        ("DataScale", c_float),
        ("DataRotation", c_float),
        ("MEMSDriverEnable", c_uint),
        ("DigitalOutputEnable", c_uint),
        ("LaserModulationEnable", c_uint),
        ("BufferOffset", c_uint),
        ("DeviceAxes", c_uint),
        ("BootSetting", c_uint),
        ("DataMode", c_uint),
        ("SyncMode", c_uint),
        ("SyncState", c_uint),
        ("SampleRateMin", c_uint),
        ("SampleRateMax", c_uint),
        ("LimitWord3", c_uint),
        ("SampleBufferCapacity", c_uint),
        ("HardwareFilterBwMin", c_uint),
        ("HardwareFilterBwMax", c_uint),
        ("LimitByte7", c_uint),
        ("LimitByte8", c_uint),
        ("LimitByte9", c_uint),
        ("LimitByte10", c_uint),
        ("VbiasMin", c_uint),
        ("VbiasMax", c_uint),
    ]


class AvailableDevices(ctypes.Structure):
    """ZRVAvailableDevicesStruct."""
    _fields_ = [
        ("DeviceName", (c_char * 32) * MAX_DEVICES),
        ("FirmwareName", (c_char * 16) * MAX_DEVICES),
        ("CommType", (c_char * 16) * MAX_DEVICES),
        ("USARTBaudRate", c_uint * MAX_DEVICES),
        ("CommPortNumber", c_uint * MAX_DEVICES),
        ("CommPortName", (c_char * 10) * MAX_DEVICES),
        ("VmaxMEMSDriver", c_float * MAX_DEVICES),
        ("NumDevices", c_uint),
    ]


# The functions used here: result, then arguments. Without these lines ctypes would cut handles to 32 bits and pass
# floats as doubles.
FUNCTIONS = {
    "ZRVCreateDevice": (c_void_p,),
    "ZRVDeleteDevice": (None, c_void_p),
    "ZRVGetLastError": (c_uint, c_void_p),
    "ZRVGetAvailableDevices": (AvailableDevices, c_void_p),
    "ZRVConnectDevice": (None, c_void_p, c_char_p),
    "ZRVConnectDeviceAuto": (None, c_void_p),
    "ZRVDisconnectDevice": (None, c_void_p),
    "ZRVGetDeviceParams": (DeviceParams, c_void_p),
    "ZRVSetDeviceParams": (None, c_void_p, DeviceParams),
    "ZRVGetDeviceParam": (c_float, c_void_p, c_uint),
    "ZRVSendDataStream": (None, c_void_p, POINTER(c_float), POINTER(c_float), POINTER(c_ubyte), c_uint, c_uint, c_bool),
    "ZRVStartDataStream": (None, c_void_p, c_int, c_bool),
    "ZRVStopDataStream": (None, c_void_p),
    "ZRVIsDeviceRunning": (c_bool, c_void_p),
    "ZRVGetXStop": (c_float, c_void_p),
    "ZRVGetYStop": (c_float, c_void_p),
    "ZRVGetIStop": (c_uint, c_void_p),
}


def load_library(path):
    path = path or ctypes.util.find_library("zrv")
    if path is None:
        sys.exit("the library is not installed; give its path with --library")
    library = ctypes.CDLL(path)
    for name, (result, *arguments) in FUNCTIONS.items():
        function = getattr(library, name)
        function.restype = result
        function.argtypes = arguments
    return library


class Device:
    """A device handle that raises what the library reports."""

    def __init__(self, library):
        self.library = library
        self.handle = library.ZRVCreateDevice()
        if not self.handle:
            raise MemoryError

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.library.ZRVDeleteDevice(self.handle)

    def call(self, name, *arguments):
        result = getattr(self.library, name)(self.handle, *arguments)
        error = self.library.ZRVGetLastError(self.handle)
        if error != ERROR_NONE:
            raise RuntimeError(f"{name} failed with error {error}")
        return result


def list_controllers(device):
    found = device.call("ZRVGetAvailableDevices")
    print(f"{found.NumDevices} controller(s) found")
    for i in range(found.NumDevices):
        print(f"  {found.CommPortName[i].value.decode()}  {found.DeviceName[i].value.decode()}")


def play(device):
    angles = [2 * math.pi * i / NUM_SAMPLES for i in range(NUM_SAMPLES)]
    floats, marks = c_float * NUM_SAMPLES, c_ubyte * NUM_SAMPLES
    x = floats(*(0.5 * math.cos(a) for a in angles))
    y = floats(*(0.5 * math.sin(a) for a in angles))
    m = marks(*[255] * NUM_SAMPLES)
    turns = max(1, int(2 * device.call("ZRVGetDeviceParam", PARAM_SAMPLE_RATE) / NUM_SAMPLES))
    device.call("ZRVSendDataStream", x, y, m, NUM_SAMPLES, 0, False)
    device.call("ZRVStartDataStream", turns, True)  # returns when all turns (32 at most) are played
    device.call("ZRVStartDataStream", -1, False)    # and now without end
    print("playing:", "yes" if device.call("ZRVIsDeviceRunning") else "no")
    device.call("ZRVStopDataStream")
    where = device.call("ZRVGetXStop"), device.call("ZRVGetYStop")
    print(f"stopped at ({where[0]:.3f}, {where[1]:.3f}), sample {device.call('ZRVGetIStop')}")


def main():
    parser = argparse.ArgumentParser(description="Plays a circle.")
    parser.add_argument("port", nargs="?", help="COM3, ttyUSB0, /dev/ttyUSB0; default: the first controller found")
    parser.add_argument("--library", help="path of the library")
    options = parser.parse_args()
    with Device(load_library(options.library)) as device:
        if options.port:
            device.call("ZRVConnectDevice", options.port.encode())
        else:
            list_controllers(device)
            device.call("ZRVConnectDeviceAuto")
        params = device.call("ZRVGetDeviceParams")
        print(f"connected to {params.DeviceName.decode()}, {params.SampleRate} samples per second")
        params.SampleRate = min(20000, params.SampleRateMax)  # a record goes both ways; unchanged fields are not sent
        device.call("ZRVSetDeviceParams", params)
        play(device)
        device.call("ZRVDisconnectDevice")


if __name__ == "__main__":
    try:
        main()
    except RuntimeError as error:
        sys.exit(str(error))
