// Files that come with the library.
#ifndef ZRV_TOOLS_DATA_FILES_H
#define ZRV_TOOLS_DATA_FILES_H

#include <string>

namespace zrvtool {

// The font file installed with the library, or that of the build tree; empty when there is none.
std::string DefaultFontFile();

}  // namespace zrvtool

#endif
