// zrv list, info, stop, goto.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>

#include "ZRVDevice.h"
#include "commands.h"
#include "errors.h"
#include "file_info.h"
#include "options.h"
#include "parameters.h"
#include "session.h"
#include "terminal.h"

namespace zrvtool {
namespace {

void PrintList(const ZRVAvailableDevices& found) {
  std::printf("%-10s %-24s %-12s %-10s %8s %7s\n", "PORT", "NAME", "FIRMWARE", "LINK", "BAUD", "VMAX");
  for (unsigned int i = 0; i < found.NumDevices; ++i)
    std::printf("%-10s %-24s %-12s %-10s %8u %5g V\n", found.CommPortName[i], found.DeviceName[i],
                found.FirmwareName[i], found.CommType[i], found.USARTBaudRate[i],
                static_cast<double>(found.VmaxMEMSDriver[i]));
}

void PrintListAsJson(const ZRVAvailableDevices& found) {
  Json json = Json::array();
  for (unsigned int i = 0; i < found.NumDevices; ++i)
    json.push_back({{"port", found.CommPortName[i]},
                    {"name", found.DeviceName[i]},
                    {"firmware", found.FirmwareName[i]},
                    {"link", found.CommType[i]},
                    {"baud", found.USARTBaudRate[i]},
                    {"vmax_v", Exact(found.VmaxMEMSDriver[i])}});
  PrintJson(json);
}

void List(bool json) {
  ZRVDevice device;
  ZRVAvailableDevices found;
  {
    StatusLine status;
    status.Show("asking every serial port, about a second each ...");
    device.GetAvailableDevices(&found);
  }
  if (json) PrintListAsJson(found);
  if (found.NumDevices == 0)
    throw ToolError(
        "no controller answered on any serial port (ErrorNoDeviceFound).\n"
        "Check power and cable, and that no other program has the port;\n"
        "without hardware, run zrv simulate in another terminal.");
  if (!json) PrintList(found);
}

Report InfoOfPort(const std::string& port) {
  ZRVDevice device;
  Connect(device, port);
  ZRVDeviceParams params;
  device.GetDeviceParams(&params);
  Check(device, "read the parameters");
  return RecordOf(params);
}

struct InfoCommand {
  std::string name;
  bool json = false;
};

void Info(const InfoCommand& command) {
  if (std::filesystem::is_directory(command.name))
    throw ToolError(command.name + " is a folder; give a port or a file");
  const bool isFile = std::filesystem::is_regular_file(command.name);
  (isFile ? InfoOfFile(command.name) : InfoOfPort(command.name)).Print(command.json);
}

void Stop(const std::string& port) {
  ZRVDevice device;
  try {
    TryToConnect(device, port);
  } catch (const ToolError& error) {
    throw ToolError(std::string(error.what()) + "\nA laser that may be on is to be switched off by hand.");
  }
  StopPlaying(device);
  std::printf("stopped at x %.4f, y %.4f; the laser is off\n", static_cast<double>(device.GetXStop()),
              static_cast<double>(device.GetYStop()));
}

struct Target {
  std::string port;
  float x = 0, y = 0;
  unsigned int digital = 0, milliseconds = 100;
};

void GoTo(const Target& target) {
  ZRVDevice device;
  Connect(device, target.port);
  CatchStopSignals();
  LaserGuard guard(device);
  device.SetDeviceParam(ParamMEMSDriverEnable, 1);
  Check(device, "switch on the mirror driver");
  device.GoToDevicePosition(target.x, target.y, static_cast<unsigned char>(target.digital), target.milliseconds);
  Check(device, "move the mirror");
  guard.LeaveOn();
  std::printf("the mirror holds x %g, y %g\n", static_cast<double>(target.x), static_cast<double>(target.y));
}

}  // namespace

void AddDeviceCommands(CLI::App& app) {
  auto listAsJson = std::make_shared<bool>(false);
  CLI::App* list = AddCommand(app, "list", "List the controllers on the serial ports", {"zrv list"});
  AddJson(*list, *listAsJson);
  list->callback([listAsJson] { List(*listAsJson); });

  auto subject = std::make_shared<InfoCommand>();
  CLI::App* info = AddCommand(app, "info", "Show what a controller, drawing, font, image or point file holds",
                              {"zrv info ttyUSB0", "zrv info drawing.ild"});
  info->add_option("port-or-file", subject->name, "port of a controller, auto, or name of a file")
      ->required()
      ->type_name("PORT|FILE");
  AddJson(*info, subject->json);
  info->callback([subject] { Info(*subject); });

  auto port = std::make_shared<std::string>();
  CLI::App* stop =
      AddCommand(app, "stop", "Stop playing, centre the mirror, switch the laser off", {"zrv stop ttyUSB0"});
  AddPort(*stop, *port);
  stop->callback([port] { Stop(*port); });

  auto target = std::make_shared<Target>();
  CLI::App* go = AddCommand(app, "goto", "Move the mirror to a position and hold it", {"zrv goto ttyUSB0 0.5 -0.25"});
  AddPort(*go, target->port);
  AddNumber(*go, "x", target->x, "position to the right", -1, 1)->required();
  AddNumber(*go, "y", target->y, "position upwards", -1, 1)->required();
  AddNumber(*go, "--digital", target->digital, "digital byte at the target", 0, 255);
  AddNumber(*go, "--ms", target->milliseconds, "time of the move, ms; 0 jumps", 0, 5000);
  go->callback([target] { GoTo(*target); });
}

}  // namespace zrvtool
