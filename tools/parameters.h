// The parameters of a controller by name.
#ifndef ZRV_TOOLS_PARAMETERS_H
#define ZRV_TOOLS_PARAMETERS_H

#include <string>
#include <vector>

#include "ZRVDefinitions.h"

namespace zrvtool {

struct ParameterRow {
  const char* name;  // as in parameter files
  ZRVParam param;
  int axis;          // of the output offsets
  const char* unit;
  const char* type;  // enumeration of its values, or null
  bool writable;
};

const std::vector<ParameterRow>& Parameters();

// Throws ToolError, with the names that exist, when there is none.
const ParameterRow& FindParameter(const std::string& name);

// "AxesFlipX" for 1 of ZRVAxes; empty when the value has no name.
std::string NameOfValue(const char* type, unsigned int value);

// A number, or the name of a value of the row's enumeration. Throws ToolError.
float ValueOf(const ParameterRow& row, const std::string& text);

// Value, unit and name: "20000 samples/s".
std::string Shown(const ParameterRow& row, float value);

// The whole record, a line a field.
void PrintRecord(const ZRVDeviceParams& params);

}  // namespace zrvtool

#endif
