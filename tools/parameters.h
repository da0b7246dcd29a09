// The parameters of a controller by name.
#ifndef ZRV_TOOLS_PARAMETERS_H
#define ZRV_TOOLS_PARAMETERS_H

#include <string>
#include <vector>

#include "ZRVDefinitions.h"
#include "report.h"

namespace zrvtool {

struct ParameterRow {
  const char* name;  // as in parameter files
  ZRVParam param;
  int axis;  // of the output offsets
  const char* unit;
  const char* type;  // enumeration of its values, "Switch" for on and off, or null
  bool writable;
  const char* help;
};

const std::vector<ParameterRow>& Parameters();

// All their names, in lines for a person.
std::string ParameterNames();

// Throws ToolError, with the names that exist, when there is none.
const ParameterRow& FindParameter(const std::string& name);

// "AxesFlipX" for 1 of ZRVAxes; the number when the value has no name.
std::string NameOfValue(const char* type, unsigned int value);

// The names that the row's values have: "off, on"; empty for one that is a plain number.
std::string NamesOfValues(const ParameterRow& row, const char* separator);

// A number or, where values have names, one of these or its number. Throws ToolError.
float ValueOf(const ParameterRow& row, const std::string& text);

// Value, unit and name: "20000 samples/s".
std::string Shown(const ParameterRow& row, float value);

// {"value": 1, "name": "AxesFlipX"}, {"value": 20000, "unit": "samples/s"}.
Json JsonOf(const ParameterRow& row, float value);

// The whole record, a line a field.
Report RecordOf(const ZRVDeviceParams& params);

}  // namespace zrvtool

#endif
