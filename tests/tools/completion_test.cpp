// What bash offers at the end of a line, by the script that zrv prints, and the manual page.
#include <gtest/gtest.h>

#include <sstream>

#include "run_zrv.h"

namespace zrvtool::test {
namespace {

// Completes $2, which bash has cut into the words of $3, and says what it was told beside the candidates.
const char kAsk[] = R"(compopt() { told+=" -o $2"; }
source <("$1" completion bash)
read -ra COMP_WORDS <<<"$3"
[[ $2 == *' ' ]] && COMP_WORDS+=('')
COMP_LINE=$2 COMP_POINT=${#2} COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
_zrv "$1"
echo "${COMPREPLY[*]}$told"
)";

struct Line {
  const char* line;  // after "zrv "
  const char* reply;
  const char* words = nullptr;  // where bash cuts it not only at blanks
};

// FOLDER has the ports ttyUSB3 and rfcomm0, and is the working directory.
const Line kLines[] = {
    {"ge", "get generate"},
    {"generate ro", "rose"},
    {"generate rose --close ", "auto none blank retrace"},
    {"generate rose --profile=tr", "trapezoidal", "generate rose --profile = tr"},
    {"generate rose --profile=", "linear trapezoidal optimized", "generate rose --profile ="},
    {"generate --filter bessel:5:100 ro", "rose", "generate --filter bessel : 5 : 100 ro"},
    {"generate rose --filter che", "chebyshev1: chebyshev2:"},
    {"generate rose --filter le", "legendre: -o nospace"},
    {"generate rose --rate 500 --ra", "--radial"},
    {"generate ilda show.ild --sam", "--samples"},
    {"generate rose --samples ", ""},
    {"generate text -- --", ""},
    {"--port-dir FOLDER play ", "rfcomm0 ttyUSB3 auto"},
    {"stop --port-dir=FOLDER tty", "ttyUSB3", "stop --port-dir = FOLDER tty"},
    {"play auto lis", "lissajous"},
    {"goto auto -0.5 --d", "--digital"},
    {"set auto DeviceA", "DeviceAxes"},
    {"set auto BootSetting ", "BootDefaults BootSavedSettings BootSavedSettingsAndRun"},
    {"set auto LaserModulationEnable ", "off on"},
    {"--port-dir FOLDER info rf", "rfcomm0 rfcomm0 -o default -o filenames"},
    {"load auto ", " -o default"},
    {"demo --output-dir ", " -o dirnames"},
    {"completion ", "bash zsh fish"},
    {"font b", "build"},
};

TEST(Completion, BashOffersWhatFits) {
  const Folder folder;
  for (const char* name : {"ttyUSB3", "rfcomm0", "other"}) WriteText(folder.File(name), "");
  const Folder scripts;
  WriteText(scripts.File("ask"), kAsk);
  for (const Line& row : kLines) {
    const std::string zrv = ZRV_TOOL_FILE, line = zrv + " " + folder.In(row.line);
    const std::string words = row.words ? zrv + " " + folder.In(row.words) : line;
    const Outcome outcome = Shell("cd " + folder.Path() + " && bash " + scripts.File("ask") + " '" + zrv + "' '" +
                                  line + "' '" + words + "'");
    EXPECT_EQ(outcome.output, std::string(row.reply) + "\n") << row.line;
  }
}

TEST(Manual, NamesEverythingAndIsOnlyRequestsAndText) {
  const std::string page = Zrv("manual").output;
  for (const char* item : {".SS zrv play PORT KIND [OPTIONS]\n", ".B hypotrochoid\n", ".B \\-\\-ring\\-a COUNT\n",
                           ".B \\-\\-animation\\-frames COUNT\n", ".B VdifferenceMax\n", ".SS zrv font build "})
    EXPECT_NE(page.find(item), std::string::npos) << item;
  std::istringstream lines(page);
  const std::string requests = " .TH .SH .SS .PP .TP .B .RS .RE .nf .fi ";
  for (std::string line; std::getline(lines, line);) {
    EXPECT_NE(line, "");
    const std::string request = ' ' + line.substr(0, line.find(' ')) + ' ';
    EXPECT_EQ(line[0] == '.', requests.find(request) != std::string::npos) << line;
    EXPECT_NE(line[0], '\'') << line;
  }
}

}  // namespace
}  // namespace zrvtool::test
