// PNG and JPEG files as grey or colour pixels.
#ifndef ZRV_TOOLS_IMAGE_FILE_H
#define ZRV_TOOLS_IMAGE_FILE_H

#include <string>
#include <vector>

namespace zrvtool {

struct Image {
  int width = 0, height = 0;
  std::vector<unsigned char> bgr;  // 3 bytes a pixel, rows from the top, no padding
};

bool IsImageFile(const std::string& name);

// Transparent parts come out white. Throws ToolError when the file cannot be read, is no PNG or JPEG, or is
// larger than 64 million pixels.
Image LoadImage(const std::string& name);

}  // namespace zrvtool

#endif
