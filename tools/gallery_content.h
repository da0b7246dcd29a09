// The parts of the gallery that show finished scans, drawings, and what the simulated mirror makes of burnt
// pictures.
#ifndef ZRV_TOOLS_GALLERY_CONTENT_H
#define ZRV_TOOLS_GALLERY_CONTENT_H

#include <string>

#include "picture.h"

namespace zrvtool {

// A drawing made for the purpose (written to the given file), a burnt test chart, and the same as the
// simulated mirror draws it, slowly and too fast.
SheetSection DrawingsAndBurns(const std::string& drawingFile);

// One tile or two for each composite generator. The drawing is the one above.
SheetSection Composites(const std::string& drawingFile);

}  // namespace zrvtool

#endif
