// zrv get, set.
#include <CLI/CLI.hpp>
#include <cstdio>

#include "ZRVDevice.h"
#include "commands.h"
#include "errors.h"
#include "options.h"
#include "parameters.h"
#include "session.h"
#include "terminal.h"

namespace zrvtool {
namespace {

struct ParameterCommand {
  std::string port, parameter, value;
  bool json = false;
};

// Refreshes the device's own record first: single parameters are read from it.
void ConnectAndRead(ZRVDevice& device, const std::string& port) {
  Connect(device, port);
  ZRVDeviceParams params;
  device.GetDeviceParams(&params);
  Check(device, "read the parameters");
}

float Value(ZRVDevice& device, const ParameterRow& row) {
  const float value = device.GetDeviceParam(row.param, row.axis);
  Check(device, std::string("read ") + row.name);
  return value;
}

void Get(const ParameterCommand& command) {
  const bool all = command.parameter.empty();
  const std::vector<ParameterRow> rows = all ? Parameters() : std::vector{FindParameter(command.parameter)};
  ZRVDevice device;
  ConnectAndRead(device, command.port);
  Json json = Json::object();
  for (const ParameterRow& row : rows) {
    const float value = Value(device, row);
    if (command.json) json[row.name] = JsonOf(row, value);
    else if (all) std::printf("%-22s %s\n", row.name, Shown(row, value).c_str());
    else std::printf("%s\n", Shown(row, value).c_str());
  }
  if (command.json) PrintJson(json);
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
  CatchStopSignals();
  LaserGuard guard(device);
  if (row.param == ParamOutputOffsets) SetOffset(device, row, value);
  else device.SetDeviceParam(row.param, value);
  Check(device, std::string("set ") + row.name + " to " + command.value);
  guard.LeaveOn();
  std::printf("%s is now %s\n", row.name, Shown(row, Value(device, row)).c_str());
}

}  // namespace

void AddParameterCommands(CLI::App& app) {
  auto options = std::make_shared<ParameterCommand>();
  const std::string more = "Parameters:\n" + ParameterNames();

  CLI::App* get = AddCommand(app, "get", "Show a parameter of a controller, or all",
                             {"zrv get ttyUSB0", "zrv get ttyUSB0 SampleRate"}, more);
  AddPort(*get, options->port);
  get->add_option("parameter", options->parameter, "its name; all when left out")->type_name("PARAMETER");
  AddJson(*get, options->json);
  get->callback([options] { Get(*options); });

  CLI::App* set = AddCommand(app, "set", "Set a parameter of a controller",
                             {"zrv set ttyUSB0 SampleRate 40000", "zrv set ttyUSB0 DeviceAxes AxesFlipX"}, more);
  AddPort(*set, options->port);
  set->add_option("parameter", options->parameter, "its name")->required()->type_name("PARAMETER");
  set->add_option("value", options->value, "a number, on, off, or the name of a value such as AxesFlipX")
      ->required()
      ->type_name("VALUE");
  set->callback([options] { Set(*options); });
}

}  // namespace zrvtool
