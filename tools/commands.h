// The commands of zrv, a function a group; each adds its subcommands with their help. Running a command
// throws ToolError when it fails.
#ifndef ZRV_TOOLS_COMMANDS_H
#define ZRV_TOOLS_COMMANDS_H

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace zrvtool {

void AddDeviceCommands(CLI::App& app);         // list, info, stop, goto
void AddPlayCommand(CLI::App& app);            // play
void AddParameterCommands(CLI::App& app);      // get, set
void AddParameterFileCommands(CLI::App& app);  // save, load
void AddSensingCommands(CLI::App& app);        // analog, track
void AddGenerateCommand(CLI::App& app);        // generate
void AddFilterCommand(CLI::App& app);          // filter
void AddDemoCommand(CLI::App& app);            // demo
void AddFontCommand(CLI::App& app);            // font build
void AddGalleryCommand(CLI::App& app);         // gallery
void AddCompletionCommand(CLI::App& app);      // completion
void AddManualCommand(CLI::App& app);          // manual

// How this program was called ("zrv", "build/tools/zrv"), for hints that can be copied as they stand.
std::string& ProgramName();

// simulate; its port appears in the port directory, when one was given by the time it runs.
void AddSimulateCommand(CLI::App& app, const std::string& portDirectory);

// A subcommand whose help ends with examples ("zrv list"), a line each, and perhaps more.
CLI::App* AddCommand(CLI::App& app, const std::string& name, const std::string& help,
                     const std::vector<std::string>& examples, const std::string& more = "");

}  // namespace zrvtool

#endif
