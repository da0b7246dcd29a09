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

struct Member {
  const char* type;
  const char* name;
  int value;
};

// Every member of the four enumerations, by value from 0: what stands in saved files may never change.
const struct {
  const char* type;
  std::vector<const char*> names;
} kEnumerations[] = {
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
  std::string ReadBack() const {
    std::stringstream content;
    content << std::ifstream(Path(), std::ios::binary).rdbuf();
    return content.str();
  }
  std::string NameOf(const char* type, int value) const {
    const std::unique_ptr<char[]> name(device_.GetEnumString(type, value));
    return name.get();
  }
  float ValueOf(const std::string& member) const {
    return device_.LoadDeviceParam(Write("DataMode = " + member + "\n").c_str(), "DataMode", 0);
  }
  float Load(const std::string& content, const char* key, float defaultValue = -7) const {
    return device_.LoadDeviceParam(Write(content).c_str(), key, defaultValue);
  }

  std::filesystem::path directory_;
  ZRVDevice device_;
};

ZRVDeviceParams Record() {
  ZRVDeviceParams p;
  std::strcpy(p.DeviceName, "Bench 1");
  std::strcpy(p.FirmwareName, "FW 3.2");
  std::strcpy(p.CommType, "USB");
  std::strcpy(p.BluetoothMAC, "00:11:22:33:44:55");
  p.USARTBaudRate = 921600;
  p.HardwareFilterOn = 1;
  p.VmaxMEMSDriver = 130;
  p.DeviceState = 256;
  p.SampleRate = 20000;
  p.HardwareFilterBw = 2000;
  p.VdifferenceMax = 62.5f;
  p.Vbias = 70;
  p.XOffset = -0.123456f;
  p.YOffset = 1;
  p.DataScale = 0.75f;
  p.DataRotation = -1.5f;
  p.MEMSDriverEnable = 1;
  p.DigitalOutputEnable = 1;
  p.BufferOffset = 16777215;
  p.DeviceAxes = AxesSwapFlipX;
  p.BootSetting = BootSavedSettingsAndRun;
  p.DataMode = DataModeAnalogVoltsRaw;
  p.SyncMode = SyncMode15;
  return p;
}

constexpr const char* kNeverLoaded =
    "DeviceName = Bench 1\nFirmwareName = FW 3.2\nCommType = USB\nBluetoothMAC = 00:11:22:33:44:55\n"
    "USARTBaudRate = 921600\nHardwareFilterOn = 1\nVmaxMEMSDriver = 130\nDeviceState = 256\n"
    "DeviceErrorRegister = 0\n";
constexpr const char* kLoaded =
    "SampleRate = 20000\nHardwareFilterBw = 2000\nVdifferenceMax = 62.5\nVbias = 70\n"
    "XOffset = -0.123456\nYOffset = 1\nDataScale = 0.75\nDataRotation = -1.5\nMEMSDriverEnable = 1\n"
    "DigitalOutputEnable = 1\nLaserModulationEnable = 0\nBufferOffset = 16777215\nDeviceAxes = AxesSwapFlipX\n"
    "BootSetting = BootSavedSettingsAndRun\nDataMode = DataModeAnalogVoltsRaw\nSyncMode = SyncMode15\n";

TEST_F(ParamFiles, EveryMemberGoesToItsNameAndBack) {
  for (const auto& [type, names] : kEnumerations) {
    for (size_t value = 0; value < names.size(); ++value) {
      EXPECT_EQ(NameOf(type, static_cast<int>(value)), names[value]);
      EXPECT_EQ(ValueOf(names[value]), static_cast<float>(value)) << names[value];
    }
    EXPECT_EQ(NameOf(type, static_cast<int>(names.size())), "");  // does not run on into the next enumeration
  }
  for (const char* type : {"ZRVAxes", "ZRVBoot", "ZRVDataMode", "ZRVSync", "ZRVNothing", ""}) {
    EXPECT_EQ(NameOf(type, 1000), "") << type;
    EXPECT_EQ(NameOf(type, -1), "") << type;
  }
  EXPECT_EQ(ValueOf("DataModeNone"), 1e9f);
  EXPECT_EQ(ValueOf("DataMod"), 1e9f);
  EXPECT_EQ(ValueOf(""), 1e9f);
}

TEST_F(ParamFiles, ARecordIsWrittenLineByLineInAnyLocale) {
  struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  for (const bool comma : {false, true}) {
    const std::locale before = std::locale();
    if (comma) std::locale::global(std::locale(std::locale::classic(), new Comma));
    if (comma) std::setlocale(LC_ALL, "de_DE.UTF-8");  // where it is installed
    ZRVDeviceParams record = Record(), loaded;
    device_.SaveDeviceParams(Path().c_str(), &record);
    EXPECT_EQ(device_.GetLastError(), ErrorNone);
    const std::string written = ReadBack();
    device_.LoadDeviceParams(&loaded, Path().c_str());
    device_.SaveDeviceParams(Path().c_str(), &loaded);
    std::locale::global(before);
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(written, std::string(kNeverLoaded) + kLoaded);
    EXPECT_EQ(ReadBack(), kLoaded);
    EXPECT_EQ(loaded.ParamsValid, 0);
  }
}

TEST_F(ParamFiles, ValuesNotGivenLeaveTheirLinesOut) {
  ZRVDeviceParams record = Record();
  record.DeviceName[0] = '\0';
  std::strcpy(record.CommType, "USB\nVbias = 1");
  std::memset(record.BluetoothMAC, 'A', sizeof record.BluetoothMAC);  // without an end
  record.SampleRate = 100000000;
  record.HardwareFilterBw = 99999999;
  record.Vbias = 1e8f;
  record.YOffset = std::numeric_limits<float>::quiet_NaN();
  record.BufferOffset = 1000000000;
  record.DataMode = static_cast<ZRVDataMode>(77);
  device_.SaveDeviceParams(Path().c_str(), &record);
  const std::string text = ReadBack();
  EXPECT_EQ(text.find("FirmwareName = FW 3.2\nCommType = USB\nBluetoothMAC = AAAAAAAAAAAAAAAAAA\n"), 0u);
  for (const char* absent : {"SampleRate", "Vbias", "YOffset", "BufferOffset"}) {
    EXPECT_EQ(text.find(absent), std::string::npos) << absent;
  }
  EXPECT_NE(text.find("HardwareFilterBw = 99999999\n"), std::string::npos);
  EXPECT_NE(text.find("\nDataMode = \nSyncMode = SyncMode15\n"), std::string::npos);
}

TEST_F(ParamFiles, OddLines) {
  const struct {
    const char* name;
    const char* content;
    const char* key;
    float value;  // -7: the default
  } kCases[] = {
      {"absent", "Vbias = 70\n", "SampleRate", -7},
      {"empty file", "", "Vbias", -7},
      {"no final newline", "Vbias = 70", "Vbias", 70},
      {"CR LF", "SampleRate = 100\r\nVbias = 70\r\n", "Vbias", 70},
      {"doubled: the first counts", "Vbias = 70\nVbias = 60\n", "Vbias", 70},
      {"misspelt key", "vbias = 70\nVbais = 71\n", "Vbias", -7},
      {"no blanks around the sign", "Vbias=70\n", "Vbias", -7},
      {"two blanks", "Vbias  = 70\nVbias =  60\n", "Vbias", 60},
      {"within a longer key", "MyVbias = 5\nVbias = 70\n", "Vbias", 5},
      {"indented", "\t Vbias = 70\n", "Vbias", 70},
      {"text behind the number", "Vbias = 70 V\n", "Vbias", 70},
      {"no number", "Vbias = high\n", "Vbias", -7},
      {"no value", "Vbias = \n", "Vbias", -7},
      {"not a number", "Vbias = nan\n", "Vbias", -7},
      {"a decimal comma", "Vbias = 70,5\n", "Vbias", 70},
      {"exponent", "Vbias = -7.05e1\n", "Vbias", -70.5f},
      {"too large", "Vbias = 1e99\n", "Vbias", std::numeric_limits<float>::infinity()},
      {"enumeration", "DeviceAxes = AxesSwap\n", "DeviceAxes", 4},
      {"enumeration, CR LF and blanks", "DeviceAxes =  AxesSwap \r\n", "DeviceAxes", 4},
      {"enumeration by number", "DeviceAxes = 4\n", "DeviceAxes", 1e9f},
      {"enumeration misspelt", "DeviceAxes = AxesSwop\n", "DeviceAxes", 1e9f},
      {"member of another enumeration", "DeviceAxes = SyncMode3\n", "DeviceAxes", 3},
  };
  for (const auto& c : kCases) EXPECT_EQ(Load(c.content, c.key), c.value) << c.name;
  EXPECT_EQ(device_.LoadDeviceParam(nullptr, "Vbias", 3), 3.0f);
  EXPECT_EQ(device_.LoadDeviceParam(Path().c_str(), nullptr, 3), 3.0f);
}

TEST_F(ParamFiles, AbsurdNumbersSaturate) {
  const struct {
    const char* text;
    unsigned value;
  } kCases[] = {{"-5", 0}, {"-1e30", 0}, {"1e30", 4294967295u}, {"4294967296", 4294967295u},
                {"2.5", 3}, {"2.4", 2}, {"1e-40", 0}, {"20000.49", 20000}};
  for (const auto& c : kCases) {
    ZRVDeviceParams p;
    device_.LoadDeviceParams(&p, Write(std::string("SampleRate = ") + c.text + "\n").c_str());
    EXPECT_EQ(p.SampleRate, c.value) << c.text;
  }
  UseHeader("enum ZRVDataMode {\n Far = 99999999999999,\n Low = -99999999999999\n};\n");
  EXPECT_EQ(ValueOf("Far"), 2147483647.0f);
  ZRVDeviceParams p;
  device_.LoadDeviceParams(&p, Write("DataMode = Low\n").c_str());
  EXPECT_EQ(p.DataMode, 0u);
}

TEST_F(ParamFiles, UnreadableFilesGiveNoField) {
  std::string junk;
  for (int i = 0; i < 100000; ++i) junk += static_cast<char>(i * 7919 >> 3);
  const std::string huge(5000000, 'x');
  for (const std::string& path : {std::string("/nowhere/params.txt"), directory_.string(), std::string(),
                                  Write(junk, "junk"), Write(huge, "huge"), Write("Vbias = " + huge, "huge value")}) {
    SCOPED_TRACE(path);
    ZRVDeviceParams p = Record();
    device_.LoadDeviceParams(&p, path.c_str());
    EXPECT_EQ(p.SampleRate, 1000000000u);
    EXPECT_EQ(p.Vbias, 1e9f);
    EXPECT_EQ(p.SyncMode, 1000000000u);
    EXPECT_STREQ(p.BluetoothMAC, "00:11:22:33:44:55");  // neither loaded nor marked
    ZRVDevice::SetDefinitionsFile(path.c_str());
    EXPECT_EQ(NameOf("ZRVBoot", 0), "");
    EXPECT_EQ(ValueOf("BootDefaults"), 1e9f);
    ZRVDevice::SetDefinitionsFile(kInTreeHeader);
  }
}

TEST_F(ParamFiles, OddHeaders) {
  UseHeader(
      "/* ZRVDataMode comes below */ // DataModeX is 5\n"
      "#define ZRVBoot 1\r\n"
      "enum ZRVAxes{\r\n"
      "\tA\t= 0,\r\n"
      "  B= 1, /* = 7 */\n"
      "  C =2,\n"      // no "= ": not a member
      "  D = x,\n"
      "  E = -3,\n"
      "  LongName = 5,\n"
      "  Long = 6 }\n"
      "  F = 8\n");
  const Member kNames[] = {{"ZRVAxes", "A", 0}, {"ZRVAxes", "B", 1}, {"ZRVAxes", "", 2},
                           {"ZRVAxes", "E", -3}, {"ZRVAxes", "Long", 6}, {"ZRVAxes", "", 8}};
  for (const auto& c : kNames) EXPECT_EQ(NameOf(c.type, c.value), c.name) << c.value;
  EXPECT_EQ(ValueOf("Long"), 6.0f);  // not the line of LongName
  EXPECT_EQ(ValueOf("B"), 1.0f);
  EXPECT_EQ(ValueOf("D"), 1e9f);
  EXPECT_EQ(ValueOf("E"), -3.0f);
  EXPECT_EQ(ValueOf("Name"), 5.0f);  // what stands before a name is not looked at
  EXPECT_EQ(ValueOf("is"), 1e9f);    // a line without a value
}

TEST_F(ParamFiles, NullAndUnwritable) {
  device_.LoadDeviceParams(nullptr, Path().c_str());
  EXPECT_EQ(device_.GetLastError(), ErrorNotConnected);
  ZRVDeviceParams record = Record();
  for (const char* bad : {static_cast<const char*>(nullptr), "/nowhere/params.txt", ""}) {
    device_.SaveDeviceParams(bad, &record);
    EXPECT_EQ(device_.GetLastError(), ErrorInvalidValue);
  }
  device_.SaveDeviceParams(Path().c_str(), nullptr);  // the device's own record
  EXPECT_EQ(device_.GetLastError(), ErrorNone);
  EXPECT_EQ(Load(ReadBack(), "SampleRate"), 10000.0f);
  device_.LoadDeviceParams(&record, nullptr);
  EXPECT_EQ(record.SampleRate, 1000000000u);
}

}  // namespace
}  // namespace zrv::testing
