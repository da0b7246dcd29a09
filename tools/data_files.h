// Files that come with the library: the definitions header and the default fonts.
#ifndef ZRV_TOOLS_DATA_FILES_H
#define ZRV_TOOLS_DATA_FILES_H

#include <string>

namespace zrvtool {

// The font file installed with the library, or that of the build tree; empty when there is none.
std::string DefaultFontFile();

// Tells the library where ZRVDefinitions.h is, for the names in parameter files: the working directory, the
// installation or the source tree. Throws ToolError when it is nowhere.
void UseDefinitionsFile();

}  // namespace zrvtool

#endif
