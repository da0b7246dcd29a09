// Files of this folder as they were when the tool was built.
#ifndef ZRV_TOOLS_EMBEDDED_H
#define ZRV_TOOLS_EMBEDDED_H

#include <string_view>

namespace zrvtool {

extern const std::string_view kViewPage;                                         // view_page.html
extern const std::string_view kBashCompletion, kZshCompletion, kFishCompletion;  // completion/

}  // namespace zrvtool

#endif
