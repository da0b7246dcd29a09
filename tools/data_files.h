// Files that come with the library, the definitions header and the default fonts, and files of samples.
#ifndef ZRV_TOOLS_DATA_FILES_H
#define ZRV_TOOLS_DATA_FILES_H

#include <cstdint>
#include <span>
#include <string>

#include "pattern.h"

namespace zrvtool {

// The font file installed with the library, or that of the build tree; empty when there is none.
std::string DefaultFontFile();

// Tells the library where ZRVDefinitions.h is, for the names in parameter files: the working directory, the
// installation or the source tree. Throws ToolError when it is nowhere.
void UseDefinitionsFile();

// Replaces a file's content. Throws ToolError, with the system's reason, when it cannot be written whole.
void WriteBytes(const std::string& name, std::span<const std::uint8_t> bytes);

// Throws ToolError when WriteBytes() could not even begin. For what is written after a long time only.
void CheckWritable(const std::string& name);

// Writes the samples as a point file, or as a table when the name ends in .csv. Throws ToolError when it cannot.
void WritePattern(const std::string& name, const Pattern& pattern);

}  // namespace zrvtool

#endif
