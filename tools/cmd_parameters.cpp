// zrv get, set.
#include <CLI/CLI.hpp>
#include <cstdio>

#include "ZRVDevice.h"
#include "commands.h"
#include "errors.h"
#include "parameters.h"
#include "session.h"

namespace zrvtool {
namespace {

struct ParameterCommand {
  std::string port, parameter, value;
};

// Refreshes the device's own record first: single parameters are read from it.
void ConnectAndRead(ZRVDevice& device, const std::string& port) {
  Connect(device, port);
  ZRVDeviceParams params;
  device.GetDeviceParams(&params);
  Check(device, "read the parameters");
}

void PrintParameter(ZRVDevice& device, const ParameterRow& row, bool withName) {
  const float value = device.GetDeviceParam(row.param, row.axis);
  Check(device, std::string("read ") + row.name);
  if (withName) std::printf("%-22s ", row.name);
  std::printf("%s\n", Shown(row, value).c_str());
}

void Get(const ParameterCommand& command) {
  if (!command.parameter.empty()) FindParameter(command.parameter);  // refuses before it connects
  ZRVDevice device;
  ConnectAndRead(device, command.port);
  if (!command.parameter.empty()) return PrintParameter(device, FindParameter(command.parameter), false);
  for (const ParameterRow& row : Parameters()) PrintParameter(device, row, true);
}

void SetOffset(ZRVDevice& device, const ParameterRow& row, float value) {
  const float other = device.GetDeviceParam(ParamOutputOffsets, 1 - row.axis);
  device.SetDeviceParam(ParamOutputOffsets, row.axis == 0 ? value : other, row.axis == 0 ? other : value);
}

void Set(const ParameterCommand& command) {
  const ParameterRow& row = FindParameter(command.parameter);
  if (!row.writable) throw WrongUse(command.parameter + " can only be read (ErrorInvalidParam): zrv get");
  const float value = ValueOf(row, command.value);
  ZRVDevice device;
  ConnectAndRead(device, command.port);
  if (row.param == ParamOutputOffsets)
    SetOffset(device, row, value);
  else
    device.SetDeviceParam(row.param, value);
  Check(device, std::string("set ") + row.name + " to " + command.value);
  std::printf("%s is now ", row.name);
  PrintParameter(device, row, false);
}

void AddPort(CLI::App* command, std::string& port) {
  command->add_option("port", port, "port of the controller, or auto")->required()->type_name("PORT");
}

}  // namespace

void AddParameterCommands(CLI::App& app) {
  auto options = std::make_shared<ParameterCommand>();
  std::string names;
  for (const ParameterRow& row : Parameters()) names += std::string(names.empty() ? "" : ", ") + row.name;
  const std::string more = "Parameters: " + names;

  CLI::App* get = AddCommand(app, "get", "Show a parameter of a controller, or all", "zrv get ttyUSB0 SampleRate", more);
  AddPort(get, options->port);
  get->add_option("parameter", options->parameter, "its name; all when left out");
  get->callback([options] { Get(*options); });

  CLI::App* set = AddCommand(app, "set", "Set a parameter of a controller", "zrv set ttyUSB0 SampleRate 40000", more);
  AddPort(set, options->port);
  set->add_option("parameter", options->parameter, "its name")->required();
  set->add_option("value", options->value, "a number, on, off, or a name such as AxesFlipX")->required();
  set->callback([options] { Set(*options); });
}

}  // namespace zrvtool
