// zrv save, load.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>

#include "ZRVDevice.h"
#include "commands.h"
#include "data_files.h"
#include "errors.h"
#include "options.h"
#include "parameters.h"
#include "session.h"
#include "terminal.h"

namespace zrvtool {
namespace {

struct FileCommand {
  std::string port, file;
};

void Save(const FileCommand& command) {
  UseDefinitionsFile();
  ZRVDevice device;
  Connect(device, command.port);
  ZRVDeviceParams params;
  device.GetDeviceParams(&params);
  Check(device, "read the parameters");
  device.SaveDeviceParams(command.file.c_str(), &params);
  if (device.GetLastError() != ErrorNone)
    throw ToolError("cannot write " + command.file + ": check that its folder exists and may be written to");
  std::printf("parameters of %s saved in %s\n", params.DeviceName, command.file.c_str());
}

bool HoldsParameters(const ZRVDevice& device, const std::string& file) {
  constexpr float kMissing = -1e9f;
  return std::any_of(Parameters().begin(), Parameters().end(), [&](const ParameterRow& row) {
    return device.LoadDeviceParam(file.c_str(), row.name, kMissing) != kMissing;
  });
}

void Load(const FileCommand& command) {
  UseDefinitionsFile();
  ZRVDevice device;
  if (!HoldsParameters(device, command.file)) throw ToolError(command.file + " holds no parameters of a controller");
  Connect(device, command.port);
  ZRVDeviceParams params;
  device.GetDeviceParams(&params);
  Check(device, "read the parameters");
  device.LoadDeviceParams(&params, command.file.c_str());
  Check(device, "read " + command.file);
  CatchStopSignals();
  LaserGuard guard(device);
  device.SetDeviceParams(&params);
  Check(device, "set the parameters of " + command.file);
  guard.LeaveOn();
  std::printf("parameters of %s set\n", command.file.c_str());
}

}  // namespace

void AddParameterFileCommands(CLI::App& app) {
  auto options = std::make_shared<FileCommand>();
  CLI::App* save =
      AddCommand(app, "save", "Save the parameters of a controller in a file", {"zrv save ttyUSB0 mirror.ini"});
  AddPort(*save, options->port);
  AddFile(*save, "file", options->file, "file to write")->required();
  save->callback([options] { Save(*options); });

  CLI::App* load = AddCommand(app, "load", "Set the parameters that a file holds", {"zrv load ttyUSB0 mirror.ini"});
  AddPort(*load, options->port);
  AddExistingFile(*load, "file", options->file, "file that zrv save wrote")->required();
  load->callback([options] { Load(*options); });
}

}  // namespace zrvtool
