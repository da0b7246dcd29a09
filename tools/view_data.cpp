#include "view_data.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <span>

#include "common/bytes.h"
#include "parameters.h"
#include "simulator/output.h"

namespace zrvtool {

namespace sim = zrv::sim;
using Json = nlohmann::ordered_json;

namespace {

constexpr std::size_t kHeaderBytes = 16, kPointBytes = 8;
constexpr float kCountsPerUnit = 16384;
constexpr unsigned kLit = 1, kApart = 2;
// Most points that are thinned out to an answer; a reader further behind has been away.
constexpr std::uint64_t kMaxBehind = 4 * kMaxViewPoints;
// A laser without colours of its own, as in the pictures of what a mirror drew.
constexpr std::uint32_t kInk = 0xFFC857;
constexpr double kFaintest = 0.12;

// --- Points ---

struct Light {
  std::uint32_t rgb = 0;
  bool lit = false;
};

std::uint32_t Dimmed(std::uint32_t rgb, double level) {
  std::uint32_t dimmed = 0;
  for (const int shift : {16, 8, 0}) {
    dimmed |= static_cast<std::uint32_t>(std::lround((rgb >> shift & 255) * level)) << shift;
  }
  return dimmed;
}

// Formats 0 and 1 have no colours: brightness is the digital byte, of which format 1 has a single bit.
Light LightOf(std::uint32_t format, std::uint8_t m, std::uint32_t rgb) {
  if (m == 0 || rgb == 0) return {};
  if (format == 1) return {kInk, true};
  if (format == 0) return {Dimmed(kInk, kFaintest + (1 - kFaintest) * m / 255), true};
  return {rgb, true};
}

// Builds an answer of points.
class PointBytes {
 public:
  PointBytes(std::uint64_t first, std::uint64_t end, std::size_t points)
      : bytes_(kHeaderBytes + points * kPointBytes), out_(bytes_) {
    out_.U64(first);
    out_.U64(end);
  }
  void Add(float x, float y, const Light& light, bool apart) {
    out_.U16(Count(x));
    out_.U16(Count(y));
    out_.U8(light.rgb >> 16 & 255);
    out_.U8(light.rgb >> 8 & 255);
    out_.U8(light.rgb & 255);
    out_.U8((light.lit ? kLit : 0) | (apart ? kApart : 0));
  }
  std::string Text() const { return {bytes_.begin(), bytes_.end()}; }

 private:
  static std::uint16_t Count(float v) {
    const float counts = std::isfinite(v) ? std::clamp(v * kCountsPerUnit, -32768.0f, 32767.0f) : 0.0f;
    return static_cast<std::uint16_t>(static_cast<std::int16_t>(std::lround(counts)));
  }
  std::vector<std::uint8_t> bytes_;
  zrv::LittleEndianWriter out_;
};

// --- Text ---

template <typename... Values>
std::string Format(const char* format, Values... values) {
  char text[120];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

const char* OnOff(bool on) { return on ? "on" : "off"; }

std::string Named(const char* type, unsigned value) {
  const std::string name = NameOfValue(type, value);
  return name.empty() ? std::to_string(value) : name;
}

std::string RoundsOf(const sim::Controller& c) {
  if (!c.IsPlaying()) return "-";
  return c.Rounds() == 0 ? "until stopped" : Format("%u times", c.Rounds());
}

std::string FormatName(std::uint32_t format) {
  constexpr const char* kNames[] = {"16 bit, digital byte", "12/11 bit, one digital bit", "12 bit, colour 565",
                                    "12 bit, colour 888", "12 bit, digital byte, colour 888"};
  return std::to_string(format) + (format < std::size(kNames) ? std::string(": ") + kNames[format] : "");
}

std::string FilterText(const sim::Controller& c) {
  return c.options().hardwareFilter ? Format("%u Hz", unsigned{c.settings().hardwareFilterBw}) : "none";
}

std::string RotationText(const sim::Settings& s) {
  const double c = (s.rotationCos - 16384) / 16383.0, sine = (s.rotationSin - 16384) / 16383.0;
  return Format("%.2f°", std::atan2(sine, c) * 180 / 3.14159265358979323846);
}

std::string OffsetText(const sim::Settings& s) {
  return Format("%+.4f, %+.4f", (s.offsetX - 32768) / 32767.0, (s.offsetY - 32768) / 32767.0);
}

Json Groups(const sim::Controller& c) {
  const sim::Settings& s = c.settings();
  const sim::Options& o = c.options();
  const auto samples = static_cast<unsigned>(c.Block().size());
  return {
      {"Playback",
       {{"Sample rate", Format("%u samples/s", s.sampleRate)},
        {"Samples", Format("%u of %u", samples, o.capacity)},
        {"Repeat", RoundsOf(c)},
        {"Samples remaining", Format("%u", c.SamplesRemaining())},
        {"Sample index", Format("%u", c.SampleIndex())},
        {"Data mode", Named("ZRVDataMode", s.dataMode)},
        {"Synchronisation", Named("ZRVSync", s.syncMode)},
        {"Sample format", FormatName(o.formatCode)}}},
      {"Mirror",
       {{"Position", Format("%+.3f, %+.3f", static_cast<double>(c.Mirror().x), static_cast<double>(c.Mirror().y))},
        {"Filter bandwidth", FilterText(c)},
        {"Resonance", Format("%g Hz, Q %g", o.mirror.resonanceHz, o.mirror.q)},
        {"Bias, difference",
         Format("%u V, %u V of %u V", unsigned{s.vbias}, unsigned{s.vdifferenceMax}, unsigned{o.vmax})},
        {"Driver", OnOff(s.memsDriver)}}},
      {"Laser",
       {{"Modulation", OnOff(s.laserModulation)},
        {"Boost", OnOff(s.laserBoost)},
        {"Digital outputs", OnOff(s.digitalOutput)},
        {"Digital byte", Format("%u", unsigned{c.Output().m})}}},
      {"Placement",
       {{"Axes", Named("ZRVAxes", s.axes)},
        {"Scale", Format("%.4f", s.dataScale / 32767.0)},
        {"Rotation", RotationText(s)},
        {"Offsets", OffsetText(s)}}},
      {"Link",
       {{"Received", Format("%llu bytes", static_cast<unsigned long long>(c.BytesReceived()))},
        {"Sent", Format("%llu bytes", static_cast<unsigned long long>(c.BytesTaken()))},
        {"Commands", Format("%llu", static_cast<unsigned long long>(c.FramesAccepted()))},
        {"Refused", Format("%llu", static_cast<unsigned long long>(c.FramesRejected()))},
        {"Baud setting", Format("%u", s.usartBaudRate)}}},
  };
}

// --- Traffic ---

std::string NameOf(const sim::Exchange& e) {
  if (e.kind == sim::Exchange::Kind::kBlock) return "sample block";
  const std::string name = sim::Controller::Describe(e.code).name;
  if (e.kind != sim::Exchange::Kind::kReport) return name;
  return e.acknowledgements > 0 ? "end of play" : "stream of " + name;
}

const char* OutcomeOf(const sim::Exchange& e) {
  using Kind = sim::Exchange::Kind;
  if (e.kind == Kind::kRefused) return "refused";
  if (e.kind == Kind::kReport) return "";
  if (e.acknowledgements >= e.times) return "acknowledged";
  const bool silent = e.kind == Kind::kCommand && !sim::Controller::Describe(e.code).acknowledged;
  return silent ? "done" : "no answer";
}

std::string HeadOf(const sim::Exchange& e) {
  std::string text;
  for (std::size_t i = 0; i < std::min(e.payload, e.head.size()); ++i) text += Format("%02X ", unsigned{e.head[i]});
  return e.payload > e.head.size() ? text + "…" : text;
}

Json Traffic(const sim::LinkLog& log) {
  Json rows = Json::array();
  for (const sim::Exchange& e : log.Copy()) {
    rows.push_back({{"time", e.time},
                    {"code", e.kind == sim::Exchange::Kind::kBlock ? "" : Format("%02X", unsigned{e.code})},
                    {"name", NameOf(e)},
                    {"payload", HeadOf(e)},
                    {"times", e.times},
                    {"toController", e.toController},
                    {"toHost", e.toHost},
                    {"outcome", OutcomeOf(e)}});
  }
  return rows;
}

}  // namespace

std::string DrawnPoints(const sim::Controller& controller, std::uint64_t after) {
  const auto& path = controller.Path();
  const std::uint64_t end = path.pushed();
  const std::uint64_t count = std::min({end - std::min(after, end), std::uint64_t{path.size()}, kMaxBehind});
  const std::uint64_t step = std::max<std::uint64_t>(1, (count + kMaxViewPoints - 1) / kMaxViewPoints);
  const double longestPeriod = 1.5 / controller.settings().sampleRate;
  PointBytes bytes(end - count, end, static_cast<std::size_t>(count / step));
  bool apart = false;
  for (std::uint64_t i = 1; i <= count; ++i) {
    const auto age = static_cast<std::size_t>(count - i);
    const sim::PathPoint& point = path.FromNewest(age);
    if (age + 1 < path.size()) apart |= point.time - path.FromNewest(age + 1).time > longestPeriod;
    if (i % step != 0) continue;
    bytes.Add(point.x, point.y, LightOf(controller.options().formatCode, point.m, point.rgb), apart);
    apart = false;
  }
  return bytes.Text();
}

std::string CommandedPoints(const sim::Controller& controller) {
  const std::vector<sim::Sample>& block = controller.Block();
  const std::size_t step = std::max<std::size_t>(1, (block.size() + kMaxViewPoints - 1) / kMaxViewPoints);
  const std::size_t count = (block.size() + step - 1) / step;
  PointBytes bytes(0, block.size(), count);
  for (std::size_t i = 0; i < block.size(); i += step) {
    const sim::Sample& sample = block[i];
    const sim::MirrorPosition at = sim::Placed(controller.settings(), sample);
    bytes.Add(at.x, at.y, LightOf(controller.options().formatCode, sample.m, sample.rgb), i == 0);
  }
  return bytes.Text();
}

Json ViewState(const sim::Controller& controller, const sim::LinkLog& log) {
  const sim::Sample& output = controller.Output();
  const Light light = LightOf(controller.options().formatCode, output.m, output.rgb);
  return {{"name", controller.DeviceName()},
          {"firmware", controller.options().firmwareName},
          {"playing", controller.IsPlaying()},
          {"drawn", controller.Path().pushed()},
          {"x", controller.Mirror().x},
          {"y", controller.Mirror().y},
          {"light", light.lit && controller.settings().laserModulation ? Format("#%06x", light.rgb) : ""},
          {"groups", Groups(controller)},
          {"traffic", Traffic(log)}};
}

}  // namespace zrvtool
