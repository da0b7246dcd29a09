// Parameter files, and enumeration names from the definitions header.
#include <clocale>
#include <filesystem>
#include <fstream>
#include <locale>
#include <sstream>

#include "tests/device/scripted_transport.h"

namespace zrv::testing {
namespace {

constexpr const char* kInTreeHeader = ZRV_SOURCE_DIR "/include/ZRVDefinitions.h";

// Every member of the four enumerations, by value from 0: what stands in saved files may never change.
const std::pair<const char*, std::vector<const char*>> kEnumerations[] = {
    {"ZRVAxes",
     {"AxesNormal", "AxesFlipX", "AxesFlipY", "AxesFlipBoth", "AxesSwap", "AxesSwapFlipX", "AxesSwapFlipY",
      "AxesSwapFlipBoth"}},
    {"ZRVBoot", {"BootDefaults", "BootSavedSettings", "BootSavedSettingsAndRun"}},
    {"ZRVDataMode",
     {"DataModeBuffer", "DataMode1", "DataMode2", "DataMode3", "DataMode4", "DataMode5", "DataModeAnalogVolts",
      "DataModeAnalogVoltsRaw", "DataModeAnalogNormalized", "DataModeOrBEX1"}},
    {"ZRVSync",
     {"SyncOff", "SyncMode1", "SyncMode2", "SyncMode3", "SyncMode4", "SyncMode5", "SyncMode6", "SyncMode7", "SyncMode8",
      "SyncMode9", "SyncMode10", "SyncMode11", "SyncMode12", "SyncMode13", "SyncMode14", "SyncMode15"}},
};

constexpr const char* kNeverLoaded =
    "DeviceName = Bench 1\nFirmwareName = FW 3.2\nCommType = USB\nBluetoothMAC = 00:11:22:33:44:55\n"
    "USARTBaudRate = 921600\nHardwareFilterOn = 1\nVmaxMEMSDriver = 130\nDeviceState = 256\n"
    "DeviceErrorRegister = 0\n";
constexpr const char* kLoaded =
    "SampleRate = 20000\nHardwareFilterBw = 2000\nVdifferenceMax = 62.5\nVbias = 70\n"
    "XOffset = -0.123456\nYOffset = 1\nDataScale = 0.75\nDataRotation = -1.5\nMEMSDriverEnable = 1\n"
    "DigitalOutputEnable = 2\nLaserModulationEnable = 0\nBufferOffset = 16777215\nDeviceAxes = AxesSwapFlipX\n"
    "BootSetting = BootSavedSettingsAndRun\nDataMode = DataModeAnalogVoltsRaw\nSyncMode = SyncMode15\n";

class ParamFiles : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
    directory_ = std::filesystem::temp_directory_path() / (std::string("zrv_param_files_") + test->name());
    std::filesystem::create_directories(directory_);
    ZRVDevice::SetDefinitionsFile(kInTreeHeader);
  }
  void TearDown() override {
    std::filesystem::remove_all(directory_);
    ZRVDevice::SetDefinitionsFile(nullptr);
  }

  std::string Path(const char* name = "params.txt") const { return (directory_ / name).string(); }
  std::string Write(const std::string& content, const char* name = "params.txt") const {
    std::ofstream(Path(name), std::ios::binary) << content;
    return Path(name);
  }
  void UseHeader(const std::string& content) { ZRVDevice::SetDefinitionsFile(Write(content, "header.h").c_str()); }
  std::string Saved(ZRVDeviceParams* record) {
    device_.SaveDeviceParams(Path().c_str(), record);
    EXPECT_EQ(device_.GetLastError(), ErrorNone);
    std::stringstream content;
    content << std::ifstream(Path(), std::ios::binary).rdbuf();
    return content.str();
  }
  ZRVDeviceParams Loaded(const std::string& content) {
    ZRVDeviceParams record;
    device_.LoadDeviceParams(&record, Write(content).c_str());
    return record;
  }
  std::string NameOf(const char* type, int value) const {
    return std::unique_ptr<char[]>(device_.GetEnumString(type, value)).get();
  }
  float Load(const std::string& content, const char* key) const {
    return device_.LoadDeviceParam(Write(content).c_str(), key, -7);
  }
  float ValueOf(const std::string& member) const { return Load("DataMode = " + member + "\n", "DataMode"); }

  std::filesystem::path directory_;
  ZRVDevice device_;
};

TEST_F(ParamFiles, EveryMemberGoesToItsNameAndBack) {
  for (const auto& [type, names] : kEnumerations) {
    for (size_t value = 0; value < names.size(); ++value) {
      EXPECT_EQ(NameOf(type, static_cast<int>(value)), names[value]);
      EXPECT_EQ(ValueOf(names[value]), static_cast<float>(value)) << names[value];
    }
    EXPECT_EQ(NameOf(type, static_cast<int>(names.size())), "");  // does not run on into the next enumeration
    EXPECT_EQ(NameOf(type, -1), "") << type;
  }
  for (const char* type : {"ZRVNothing", ""}) EXPECT_EQ(NameOf(type, 0), "");
  for (const char* name : {"DataModeNone", "DataMod", ""}) EXPECT_EQ(ValueOf(name), 1e9f);
}

struct Comma : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST_F(ParamFiles, ARecordIsWrittenLineByLineInAnyLocale) {
  for (const bool comma : {false, true}) {
    const std::locale before = std::locale();
    if (comma) std::locale::global(std::locale(std::locale::classic(), new Comma));
    if (comma) std::setlocale(LC_ALL, "de_DE.UTF-8");  // where it is installed
    ZRVDeviceParams loaded = Loaded(std::string(kNeverLoaded) + kLoaded);
    const std::string saved = Saved(&loaded);
    std::locale::global(before);
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(saved, kLoaded);
    EXPECT_EQ(std::tuple(loaded.SampleRate, loaded.XOffset, loaded.YOffset), std::tuple(20000u, -0.123456f, 1.0f));
    std::strcpy(loaded.DeviceName, "Bench 1");
    std::strcpy(loaded.FirmwareName, "FW 3.2");
    std::strcpy(loaded.CommType, "USB");
    std::strcpy(loaded.BluetoothMAC, "00:11:22:33:44:55");
    loaded.USARTBaudRate = 921600;
    loaded.HardwareFilterOn = 1;
    loaded.VmaxMEMSDriver = 130;
    loaded.DeviceState = 256;
    loaded.DeviceErrorRegister = 0;
    EXPECT_EQ(Saved(&loaded), std::string(kNeverLoaded) + kLoaded);
  }
}

TEST_F(ParamFiles, ValuesNotGivenLeaveTheirLinesOut) {
  ZRVDeviceParams record;
  std::strcpy(record.CommType, "USB\nVbias = 1");
  std::memset(record.BluetoothMAC, 'A', sizeof record.BluetoothMAC);  // without an end
  record.SampleRate = 100000000;
  record.HardwareFilterBw = 99999999;
  record.Vbias = 1e8f;
  record.YOffset = kNaN;
  record.DataMode = static_cast<ZRVDataMode>(77);
  const std::string text = Saved(&record);
  EXPECT_EQ(text.find("CommType = USB\nBluetoothMAC = AAAAAAAAAAAAAAAAAA\n"), 0u);
  for (const char* absent : {"SampleRate", "Vbias", "YOffset"}) EXPECT_EQ(text.find(absent), text.npos) << absent;
  EXPECT_NE(text.find("HardwareFilterBw = 99999999\n"), text.npos);
  EXPECT_NE(text.find("\nDataMode = \nSyncMode = SyncOff\n"), text.npos);
}

TEST_F(ParamFiles, OddLines) {
  const std::tuple<const char*, const char*, float> kCases[] = {
      {"Vbias = 70\n", "SampleRate", -7},  // the default
      {"", "Vbias", -7},
      {"SampleRate = 100\r\nVbias = 70", "Vbias", 70},
      {"Vbias = 70\nVbias = 60\n", "Vbias", 70},
      {"vbias = 70\nVbais = 71\nVbias=70\n", "Vbias", -7},
      {"Vbias  = 70\nVbias =  60\n", "Vbias", 60},
      {"MyVbias = 5\nVbias = 70\n", "Vbias", 5},
      {"\t Vbias = 70 V\n", "Vbias", 70},
      {"Vbias = high\n", "Vbias", -7},
      {"Vbias = \n", "Vbias", -7},
      {"DeviceAxes =  AxesSwap \r\n", "DeviceAxes", 4},
      {"DeviceAxes = 4\n", "DeviceAxes", 1e9f},
      {"DeviceAxes = AxesSwop\n", "DeviceAxes", 1e9f},
      {"DeviceAxes = SyncMode3\n", "DeviceAxes", 3},
  };
  for (const auto& [content, key, value] : kCases) EXPECT_EQ(Load(content, key), value) << content;
  EXPECT_EQ(device_.LoadDeviceParam(nullptr, "Vbias", 3), 3.0f);
  EXPECT_EQ(device_.LoadDeviceParam(Path().c_str(), nullptr, 3), 3.0f);
}

TEST_F(ParamFiles, AbsurdNumbersSaturate) {
  const std::pair<const char*, unsigned> kCases[] = {{"-1e30", 0}, {"1e30", 4294967295u}, {"2.5", 3},
                                                     {"2.4", 2},   {"1e-40", 0},          {"20000.49", 20000}};
  for (const auto& [text, value] : kCases) {
    EXPECT_EQ(Loaded(std::string("SampleRate = ") + text + "\n").SampleRate, value) << text;
  }
  UseHeader("enum ZRVDataMode {\n Far = 99999999999999,\n Low = -99999999999999\n};\n");
  EXPECT_EQ(ValueOf("Far"), 2147483647.0f);
  EXPECT_EQ(Loaded("DataMode = Low\n").DataMode, 0u);
}

TEST_F(ParamFiles, OddHeaders) {
  UseHeader(
      "/* ZRVDataMode comes below */ // DataModeX is 5\n"
      "#define ZRVBoot 1\r\n"
      "enum ZRVAxes{\r\n"
      "\tA\t= 0,\r\n"
      "  B= 1, /* = 7 */\n"
      "  C =2,\n"  // no "= ": not a member
      "  D = x,\n"
      "  E = -3,\n"
      "  LongName = 5,\n"
      "  Long = 6 }\n"
      "  F = 8\n");
  const std::pair<int, const char*> kNames[] = {{0, "A"}, {1, "B"}, {2, ""}, {-3, "E"}, {6, "Long"}, {8, ""}};
  for (const auto& [value, name] : kNames) EXPECT_EQ(NameOf("ZRVAxes", value), name) << value;
  const std::pair<const char*, float> kValues[] = {{"Long", 6}, {"B", 1}, {"D", 1e9f}, {"E", -3},  // not of LongName
                                                   {"Name", 5},    // what stands before a name is not looked at
                                                   {"is", 1e9f}};  // a line without a value
  for (const auto& [name, value] : kValues) EXPECT_EQ(ValueOf(name), value) << name;
}

TEST_F(ParamFiles, UnreadableAndUnwritableFiles) {
  device_.LoadDeviceParams(nullptr, Path().c_str());
  EXPECT_EQ(device_.GetLastError(), ErrorNotConnected);
  ZRVDeviceParams p;
  for (const char* bad : {static_cast<const char*>(nullptr), "/nowhere/params.txt", ""}) {
    device_.SaveDeviceParams(bad, &p);
    EXPECT_EQ(device_.GetLastError(), ErrorInvalidValue);
    device_.LoadDeviceParams(&p, bad);
    EXPECT_EQ(std::tuple(p.SampleRate, p.Vbias, p.VmaxMEMSDriver), std::tuple(1000000000u, 1e9f, 1e9f));
  }
  EXPECT_EQ(Load(Saved(nullptr), "SampleRate"), 10000.0f);  // the device's own record
  ZRVDevice::SetDefinitionsFile(Write("ZRVBoot\n" + std::string(5000000, 'x'), "header.h").c_str());
  EXPECT_EQ(NameOf("ZRVBoot", 0), "");
}

}  // namespace
}  // namespace zrv::testing
