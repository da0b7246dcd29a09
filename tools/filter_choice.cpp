#include "filter_choice.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <vector>

#include "common/bytes.h"
#include "common/files.h"
#include "errors.h"
#include "values.h"

namespace zrvtool {
namespace {

struct Family {
  const char* word;
  const char* name;
  unsigned int type;
};

constexpr Family kFamilies[] = {
    {"bessel", "Bessel", 1},           {"butterworth", "Butterworth", 2}, {"chebyshev1", "Chebyshev I", 3},
    {"chebyshev2", "Chebyshev II", 4}, {"elliptic", "Elliptic", 5},       {"legendre", "Legendre", 6},
};
constexpr unsigned int kGeneric = 7;

[[noreturn]] void Refuse(const std::string& text, const std::string& why) {
  throw WrongUse("--filter " + text + ": " + why +
                 ". Give family:order:cutoff in Hz, for instance bessel:5:1000, with one of the families " +
                 FilterFamilies(", ") + "; or file:NAME for a coefficient file");
}

// What keeps a file of coefficients from being a filter; empty when nothing does. The library would go without one
// and not say so.
std::string FaultIn(const std::string& file) {
  constexpr unsigned int kHighestOrder = 31;
  const auto bytes = zrv::ReadStartOfFile(file.c_str(), 8 + 2 * sizeof(double) * (kHighestOrder + 1));
  if (!bytes) return "it cannot be read";
  zrv::LittleEndianReader in(*bytes);
  in.U32();  // the sample rate, or 0
  const unsigned int order = in.U32();
  if (!in.ok() || order < 1 || order > kHighestOrder)
    return "it is no file of coefficients, whose order goes from 1 to 31";
  for (unsigned int i = 0; i < 2 * (order + 1); ++i) {
    const double coefficient = in.F64();
    if (!in.ok())
      return "it is cut short: an order of " + std::to_string(order) + " takes " +
             std::to_string(8 + 16 * (order + 1)) + " bytes";
    if (!std::isfinite(coefficient)) return "a coefficient is not a finite number";
    if (i == order + 1 && coefficient == 0) return "its first coefficient of the denominator is 0";
  }
  return {};
}

}  // namespace

std::string FilterFamilies(const char* separator) {
  std::string words;
  for (const Family& family : kFamilies) words += (words.empty() ? "" : separator) + std::string(family.word);
  return words;
}

FilterChoice FilterChoiceIn(const std::string& text) {
  FilterChoice choice;
  if (text.starts_with("file:")) {
    choice.type = kGeneric;
    choice.file = text.substr(5);
    if (!std::filesystem::is_regular_file(choice.file)) throw ToolError("--filter: there is no file " + choice.file);
    if (const std::string fault = FaultIn(choice.file); !fault.empty())
      throw ToolError("--filter: " + choice.file + " gives no filter: " + fault);
    return choice;
  }
  const std::vector<std::string> words = Split(text, ':');
  if (words.size() != 3) Refuse(text, "three parts are needed");
  const auto* family =
      std::find_if(std::begin(kFamilies), std::end(kFamilies), [&](const Family& f) { return f.word == words[0]; });
  if (family == std::end(kFamilies)) Refuse(text, "no such family");
  const double order = ParseNumber(words[1], "--filter, order"), cutoff = ParseNumber(words[2], "--filter, cutoff");
  if (order < 1 || order > 20 || order != static_cast<unsigned int>(order)) Refuse(text, "the order goes from 1 to 20");
  if (cutoff <= 0) Refuse(text, "the cutoff must be above 0 Hz");
  choice.type = family->type;
  choice.family = family->name;
  choice.order = static_cast<unsigned int>(order);
  choice.cutoff = static_cast<float>(cutoff);
  return choice;
}

std::string Describe(const FilterChoice& choice) {
  if (choice.type == kGeneric) return "Filter of " + choice.file;
  char cutoff[32];
  std::snprintf(cutoff, sizeof cutoff, "%g", static_cast<double>(choice.cutoff));
  return choice.family + " low-pass, order " + std::to_string(choice.order) + ", " + cutoff + " Hz";
}

void SetUpFilter(ZRVDataGenerator& generator, const FilterChoice& choice, float rate, bool twoChannels) {
  if (choice.type == kGeneric) generator.LoadIIRFilterParams(choice.file.c_str());
  else if (choice.cutoff >= rate / 2)
    throw WrongUse("--filter: the cutoff of the " + Describe(choice) + " must be below half the sample rate (" +
                   std::to_string(static_cast<int>(rate)) + " per second)");
  generator.SetupSoftwareFilter(choice.type, choice.order, choice.cutoff, rate, twoChannels);
}

void ApplyFilter(ZRVDataGenerator& generator, const FilterChoice& choice, bool zeroPhase, bool overTime, Pattern& p) {
  SetUpFilter(generator, choice, static_cast<float>(p.rate), true);
  const std::size_t room = p.size() * (zeroPhase ? 3 : 1);
  const auto count = static_cast<unsigned int>(p.size());
  std::vector<float> x(room), y(room);
  for (int round = 0; round < (zeroPhase ? 1 : 2); ++round)
    generator.FilterData(p.x.data(), p.y.data(), x.data(), y.data(), count, zeroPhase);
  if (!overTime) std::copy_n(x.begin(), p.size(), p.x.begin());
  std::copy_n(y.begin(), p.size(), p.y.begin());
}

}  // namespace zrvtool
