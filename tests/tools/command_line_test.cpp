// What a user sees: help, exit statuses, messages, files.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "run_zrv.h"
#include "tools/canvas.h"
#include "tools/kinds.h"

namespace zrvtool::test {
namespace {

TEST(CommandLine, EveryCommandExplainsItselfWithAnExample) {
  const std::string all = Zrv("--help").output;
  for (const char* command : {"list", "info", "play", "stop", "goto", "simulate", "demo", "get", "set", "save", "load",
                              "analog", "track", "generate", "filter", "font", "gallery", "completion", "manual"}) {
    EXPECT_NE(all.find(std::string("\n  ") + command + " "), std::string::npos) << command;
    const Outcome help = Zrv(std::string(command) + " --help");
    EXPECT_EQ(help.status, 0) << command;
    EXPECT_NE(help.output.find("Example: zrv "), std::string::npos) << help.output;
  }
  EXPECT_EQ(Zrv("--version").output, "zrv 10.7.1.0\n");
}

struct Wrong {
  const char* arguments;
  int status;
  const char* message;
};

// FOLDER stands for a directory of the test.
const Wrong kWrong[] = {
    {"", 2, "COMMAND is missing"},
    {"dance", 2, "nothing called dance"},
    {"--port-dir FOLDER list", 1, "ErrorNoDeviceFound"},
    {"--port-dir FOLDER info ttyUSB7", 1, "could not connect to ttyUSB7"},
    {"--port-dir FOLDER play auto sine", 1, "ErrorNoDeviceFound"},
    {"info FOLDER", 1, "is a folder"},
    {"play ttyUSB0 rose --repeat 33", 2, "--repeat"},
    {"goto ttyUSB0 1.5 0", 2, "1.5"},
    {"set ttyUSB0 Vbais 40", 2, "Vbias"},
    {"set ttyUSB0 DeviceState 1", 2, "only be read"},
    {"set ttyUSB0 DeviceAxes AxesUpsideDown", 2, "AxesSwapFlipBoth"},
    {"generate", 2, "KIND is missing"},
    {"generate rose", 2, "nothing to write"},
    {"generate rose --ring-a 0 -o FOLDER/x", 2, "0 is not in 1 .. 1000"},
    {"generate rose --keystone 1,2,3 -o FOLDER/x", 2, "eight numbers"},
    {"generate rose --filter bessel:5:12000 -o FOLDER/x", 2, "half the sample rate"},
    {"generate rose -o FOLDER/no/such/x", 1, "cannot write"},
    {"generate rose --preview FOLDER/x.bmp", 2, ".png or .svg"},
    {"generate rose --preview FOLDER/no/x.png", 1, "cannot write"},
    {"generate points FOLDER/none -o FOLDER/x", 2, "FOLDER/none"},
    {"generate ilda FOLDER/junk -o FOLDER/x", 1, "not an ILDA drawing"},
    {"generate points FOLDER/junk -o FOLDER/x", 1, "holds no points"},
    {"generate clock --time 25:00:00 -o FOLDER/x", 2, "not a time of day"},
    {"generate raster --pixels 5000 --lines 1000 -o FOLDER/x", 1, "fewer --pixels"},
    {"filter --filter bessel:5:1000", 2, "nothing to do"},
    {"filter --filter bessel:5:1e30 --response FOLDER/x.png", 2, "1e+30 Hz must be below"},
    {"generate rose -o /dev/full", 1, "cannot write /dev/full: No space left"},
    {"generate rose -o FOLDER/full.csv", 1, "cannot write"},
    {"generate rose --preview FOLDER/full.png", 1, "cannot write"},
    {"generate rose --preview FOLDER/full.svg", 1, "cannot write"},
    {"font build -o /dev/full", 1, "cannot write"},
    {"completion csh", 2, "none of bash, zsh, fish"},
    {"filter FOLDER/points FOLDER/x --filter file:FOLDER/junk", 1,
     "FOLDER/junk gives no filter: it is no file of coeff"},
    {"set ttyUSB0 DataMode 99", 2, "DataModeOrBEX1"},
    {"set ttyUSB0 LaserModulationEnable 2", 2, "off, on"},
    {"set ttyUSB0 Vbias nan", 2, "nan is not a number"},
    {"play ttyUSB0 rose --seconds inf", 2, "inf is not a number"},
    {"simulate --q nan", 2, "nan is not a number"},
    {"simulate --ai0 sine:nan", 2, "nan is not a number"},
    {"simulate --port-name ../x", 2, "../x\" is no name of a file"},
    {"simulate --name a\x1b", 2, "control character"},
    {"simulate --name 12345678901234567890123456789012", 2, "longer than 31 bytes"},
    {"simulate --picture FOLDER/no/x.png", 1, "cannot write FOLDER/no/x.png"},
    {"load ttyUSB0 FOLDER/junk", 1, "holds no parameters"},
};

TEST(CommandLine, MistakesAreExplainedAndFail) {
  const Folder folder;
  WriteText(folder.File("junk"), "no numbers here\n");
  WriteText(folder.File("points"), "0 0 1\n0.5 0 1\n");
  for (const char* full : {"full.csv", "full.png", "full.svg"})
    std::filesystem::create_symlink("/dev/full", folder.File(full));
  EXPECT_EQ(Shell(ZRV_TOOL_FILE " manual >/dev/full").status, 1);
  for (const Wrong& row : kWrong) {
    const auto [status, output] = Zrv(folder.In(row.arguments));
    EXPECT_EQ(status, row.status) << row.arguments << "\n" << output;
    EXPECT_NE(output.find(folder.In(row.message)), std::string::npos) << row.arguments << "\n" << output;
  }
}

Pattern Read(const std::string& file) { return MakePattern("points", {{"file", file}}); }

TEST(CommandLine, GeneratesAPointFileThatReadsBack) {
  const Folder folder;
  const std::string file = folder.File("square.txt");
  ASSERT_EQ(Zrv("generate polygon --sides 4 --samples 8 --amplitude 0.5 --rate 1000 -o " + file).status, 0);
  // Two points a side from (0.5, 0) counter-clockwise, and the first corner again.
  const float x[] = {0.5f, 0.25f, 0, -0.25f, -0.5f, -0.25f, 0, 0.25f, 0.5f};
  const float y[] = {0, 0.25f, 0.5f, 0.25f, 0, -0.25f, -0.5f, -0.25f, 0};
  const Pattern p = Read(file);
  EXPECT_EQ(p.rate, 1000u);
  ASSERT_EQ(p.size(), 9u);
  for (std::size_t i = 0; i < 9; ++i) {
    EXPECT_NEAR(p.x[i], x[i], 1e-6f);
    EXPECT_NEAR(p.y[i], y[i], 1e-6f);
    EXPECT_EQ(p.m[i], 255u);
  }
  const std::string info = Zrv("info " + file).output;
  EXPECT_NE(info.find("9, 9 lit"), std::string::npos) << info;
  EXPECT_NE(info.find("1000 samples/s"), std::string::npos) << info;

  ASSERT_EQ(Zrv("generate points " + file + " --offset-x 0.25 -o " + folder.File("turned.csv")).status, 0);
  const std::string csv = ReadText(folder.File("turned.csv"));
  EXPECT_EQ(csv.rfind("time_s,x,y,m\n0,0.75,", 0), 0u) << csv;
  EXPECT_NE(csv.find("\n0.008,0.75,"), std::string::npos) << csv;
}

TEST(CommandLine, FiltersAPointFile) {
  const Folder folder;
  const std::string in = folder.File("in.txt"), out = folder.File("out.txt");
  ASSERT_EQ(Zrv("generate square --cycles 2 --samples 400 --rate 20000 --amplitude 0.5 -o " + in).status, 0);
  const std::string response = " --response " + folder.File("r.svg");
  ASSERT_EQ(Zrv("filter " + in + " " + out + " --filter bessel:4:500" + response).status, 0);
  EXPECT_NE(ReadText(folder.File("r.svg")).find("<svg"), std::string::npos);
  const Pattern p = Read(out);
  EXPECT_EQ(p.rate, 20000u);
  ASSERT_EQ(p.size(), 400u);
  float steepest = 0;
  for (std::size_t i = 1; i < p.size(); ++i) steepest = std::max(steepest, std::abs(p.y[i] - p.y[i - 1]));
  EXPECT_GT(steepest, 0.01);  // it still moves
  EXPECT_LT(steepest, 0.2);   // the edges of the square are a jump of 1
}

// Only the left half of the picture is dark, and its width is no multiple of four bytes.
TEST(CommandLine, BurnsAPictureWhereItIsDark) {
  if (Zrv("generate --help").output.find("\n  image ") == std::string::npos) GTEST_SKIP() << "built without OpenCV";
  const Folder folder;
  const std::string half = folder.File("half.png"), burnt = folder.File("o.txt");
  {
    Canvas canvas(half, 51, 51);
    canvas.Fill({0, 0, 51, 51}, Rgb(0xFFFFFF));
    canvas.Fill({0, 0, 25, 51}, Rgb(0x000000));
    canvas.Save();
  }
  ASSERT_EQ(Zrv("generate image " + half + " --lines 20 --pixels 20 -o " + burnt).status, 0);
  const Pattern p = Read(burnt);
  int lit = 0;
  for (std::size_t i = 0; i < p.size(); ++i) {
    lit += p.m[i] >= 200;
    EXPECT_TRUE(p.m[i] < 200 || p.x[i] < 0.05f) << i;
  }
  EXPECT_GT(lit, 150);
}

TEST(CommandLine, QuietInAPipe) {
  const Folder folder;
  EXPECT_EQ(Zrv("generate rose -o " + folder.File("rose.txt")).output.find_first_of("\r\x1b"), std::string::npos);
}

}  // namespace
}  // namespace zrvtool::test
