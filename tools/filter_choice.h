// The software output filter as the command line names it: family:order:cutoff.
#ifndef ZRV_TOOLS_FILTER_CHOICE_H
#define ZRV_TOOLS_FILTER_CHOICE_H

#include <string>

#include "ZRVDataGenerator.h"
#include "pattern.h"

namespace zrvtool {

struct FilterChoice {
  unsigned int type = 1;  // of SetupSoftwareFilter; 7 is a coefficient file
  std::string family;
  unsigned int order = 0;
  float cutoff = 0;  // Hz
  std::string file;  // of coefficients
};

// The words for the families: "bessel, butterworth, ...".
std::string FilterFamilies(const char* separator);

// "bessel:5:1000" or "file:coefficients.bin". Throws ToolError when it is neither.
FilterChoice FilterChoiceIn(const std::string& text);

// "Bessel low-pass, order 5, 1000 Hz".
std::string Describe(const FilterChoice& choice);

// Sets the generator's filter up, from rest.
void SetUpFilter(ZRVDataGenerator& generator, const FilterChoice& choice, float rate, bool twoChannels);

// Filters the positions, y alone when x is a time axis. As for a pattern that is played over and over: the
// filter has passed through it once before. The pattern's rate must be set.
void ApplyFilter(ZRVDataGenerator& generator, const FilterChoice& choice, bool zeroPhase, bool overTime,
                 Pattern& pattern);

}  // namespace zrvtool

#endif
