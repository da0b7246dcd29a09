// What a file holds, said in a few lines.
#ifndef ZRV_TOOLS_FILE_INFO_H
#define ZRV_TOOLS_FILE_INFO_H

#include <string>

#include "report.h"

namespace zrvtool {

// Drawings, fonts, images, point and point-time files. Throws ToolError when it is none of these.
Report InfoOfFile(const std::string& name);

}  // namespace zrvtool

#endif
